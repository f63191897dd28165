#pragma once

#include <string>
#include <string_view>

#include "messages/FileDescriptor.h"
#include "snmp/HostResolver.h"

namespace vireo {

/// A socket that sends datagrams to one address. One thread at a time.
class TrapSocket {
public:
    /// False, with a one-line `error`, when there is no way to the address.
    bool open(const UdpAddress& address, std::string& error);
    bool isOpenTo(const UdpAddress& address) const { return m_isOpen && m_address == address; }
    void close();

    /// Waits shortly when the machine cannot take it at once. False with a one-line `error`. That
    /// nobody listens there is no failure: a trap is not confirmed.
    bool send(std::string_view bytes, std::string& error);
    /// The next datagram from there; empty when there is none, or what was sent did not get there.
    /// Does not wait.
    std::string receive();
    /// -1 while it is closed.
    int descriptor() const { return m_socket.get(); }

    /// The phone's own IPv4 address as the receiver sees it; "0.0.0.0" with IPv6.
    std::string ownAddress() const;

private:
    FileDescriptor m_socket{-1};
    UdpAddress m_address;
    bool m_isOpen = false;
};

}  // namespace vireo
