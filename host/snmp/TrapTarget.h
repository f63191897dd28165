#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "snmp/HostResolver.h"
#include "snmp/TrapPort.h"

namespace vireo {

/// Where the traps of one session go: the texts of the items, and the address behind them. One
/// thread at a time.
class TrapTarget {
public:
    /// `resolver` outlives this.
    TrapTarget(HostResolver& resolver, TrapAddress address);

    /// The address; null, with a one-line `error`, while there is none. Of a host that has a name
    /// it may become another one.
    const UdpAddress* find(std::string& error);
    const TrapAddress& texts() const { return m_texts; }
    /// The receiver as log lines have it.
    std::string name() const;

private:
    HostResolver& m_resolver;
    const TrapAddress m_texts;
    bool m_isForGood = false;  ///< the host is an address
    std::chrono::steady_clock::time_point m_looked;
    std::optional<UdpAddress> m_address;
};

/// What is to be logged of failures that come with every trap: each once, until one was sent.
class FailureOnce {
public:
    /// Leaves nothing of an `error` that was said last time. Answers `result`.
    bool pass(bool result, std::string& error);

private:
    std::string m_last;
};

}  // namespace vireo
