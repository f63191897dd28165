#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "snmp/HostResolver.h"
#include "snmp/InformSender.h"
#include "snmp/TrapMessage.h"
#include "snmp/TrapOptions.h"
#include "snmp/TrapPort.h"

namespace vireo {

/// Sends traps with the SNMP library. Those of version 1 and 2c leave on the thread that raises
/// them; informs, and what is of version 3, on a thread of their own.
class NetSnmpTraps : public TrapPort {
public:
    /// `root` is the directory that holds the files of version 3.
    NetSnmpTraps(const std::string& root, const TrapOptions& options);
    NetSnmpTraps(const NetSnmpTraps&) = delete;
    NetSnmpTraps& operator=(const NetSnmpTraps&) = delete;
    ~NetSnmpTraps() override;

    /// Ends the thread. What still waits to be sent or confirmed is given up, with a line.
    void stop();

    std::unique_ptr<TrapSession> open(const TrapAddress& address) override;

private:
    class Session;
    class DirectSession;
    class QueuedSession;

    /// Hundredths of a second since the start.
    std::uint32_t upTime() const;

    const TrapOptions m_options;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    HostResolver m_resolver;
    TrapOrigin m_origin;
    bool m_hasAgentAddress = false;
    InformSender m_informs;
};

}  // namespace vireo
