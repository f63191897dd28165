#include "snmp/TrapSocket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <cerrno>
#include <system_error>

namespace vireo {
namespace {

// When the machine's own queue is full. Whoever raises a trap may be the message thread.
constexpr timeval kLongestSend{0, 100'000};

constexpr std::size_t kLongestDatagram = std::size_t{64} << 10U;

std::string reasonOf(int number) {
    return std::generic_category().message(number);
}

}  // namespace

bool TrapSocket::open(const UdpAddress& address, std::string& error) {
    close();
    FileDescriptor socket(::socket(address.storage.ss_family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!socket || ::connect(socket.get(), address.get(), address.length) != 0) {
        error = "no way to " + address.text() + ": " + reasonOf(errno);
        return false;
    }
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &kLongestSend, sizeof kLongestSend);
    m_socket = std::move(socket);
    m_address = address;
    m_isOpen = true;
    return true;
}

void TrapSocket::close() {
    m_socket = FileDescriptor(-1);
    m_isOpen = false;
}

bool TrapSocket::send(std::string_view bytes, std::string& error) {
    ssize_t sent = ::send(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == ECONNREFUSED) {
        // That is what became of an earlier one; this one was not sent yet.
        sent = ::send(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }
    if (sent < 0 && errno != ECONNREFUSED) {
        error = "cannot send to " + m_address.text() + ": " + reasonOf(errno);
        return false;
    }
    return true;
}

std::string TrapSocket::receive() {
    std::string bytes(kLongestDatagram, '\0');
    const ssize_t count = ::recv(m_socket.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
}

std::string TrapSocket::ownAddress() const {
    sockaddr_in own{};
    socklen_t length = sizeof own;
    char text[INET_ADDRSTRLEN] = "0.0.0.0";
    if (m_isOpen && m_address.storage.ss_family == AF_INET &&
        ::getsockname(m_socket.get(), reinterpret_cast<sockaddr*>(&own), &length) == 0) {
        ::inet_ntop(AF_INET, &own.sin_addr, text, sizeof text);
    }
    return text;
}

}  // namespace vireo
