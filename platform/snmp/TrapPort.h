#pragma once

#include <memory>
#include <string>

#include "Visibility.h"

namespace vireo {

class SNMPTrapData;

/// Where traps go, as an administrator types it.
struct TrapAddress {
    std::string host;      ///< IPv4 or IPv6 address or a name; empty: nowhere
    std::string port;      ///< a number; empty: 162
    std::string password;  ///< the community; protocols with users of their own do not send it
};

/// An open way to one receiver; its end closes it, and what still waits to be confirmed is given
/// up. One call at a time. Throws nothing.
class VIREO_API TrapSession {
public:
    virtual ~TrapSession() = default;
    /// True when the trap is under way, or waits for its turn. Else false with a one-line `error`
    /// that names the receiver and what is wrong; empty when there is nothing new to be said.
    virtual bool sendGeneric(int genericTrap, std::string& error) = 0;
    virtual bool sendSpecific(const SNMPTrapData& data, std::string& error) = 0;
};

/// The real part behind `SNMPTrapIf`. Safe from every thread. Throws nothing.
class VIREO_API TrapPort {
public:
    virtual ~TrapPort() = default;
    /// Never null: with an address that cannot be used, every send fails.
    virtual std::unique_ptr<TrapSession> open(const TrapAddress& address) = 0;
};

}  // namespace vireo
