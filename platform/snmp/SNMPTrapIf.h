#pragma once

#include <memory>
#include <string>

#include "Visibility.h"

namespace vireo {

class SNMPTrapData;
class TrapSession;

/// A session with one receiver of traps, from construction to destruction. Forwards to the
/// installed `TrapPort`. One send at a time; the destructor may run on any thread. Nothing is
/// thrown but `std::bad_alloc`; what fails is logged and answered with 0.
class VIREO_API SNMPTrapIf {
public:
    /// Opens the session. `address` is an IPv4 or IPv6 address or a name; with an empty one, and
    /// without a port, every send answers 0. `port` is a number, empty 162. `password` is the
    /// community.
    SNMPTrapIf(const std::string& address, const std::string& port, const std::string& password);
    ~SNMPTrapIf();
    SNMPTrapIf(const SNMPTrapIf&) = delete;
    SNMPTrapIf& operator=(const SNMPTrapIf&) = delete;

    /// Sends one of the generic traps 0 (coldStart) to 5 (egpNeighborLoss). 1, or 0 when it could
    /// not be sent, which it never can for another number. A trap that is to be confirmed counts as
    /// sent when it waits for its turn.
    int sendSNMPGenericTrap(int genericTrap);
    /// The same for a trap of the phone's own.
    int sendSNMPSpecificTrap(const SNMPTrapData& data);

private:
    std::unique_ptr<TrapSession> m_session;  // null without a port
};

}  // namespace vireo
