#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "messages/FileDescriptor.h"
#include "snmp/BerCursor.h"

namespace vireo::test {

/// One trap of version 1 as it came in.
struct ReceivedTrap {
    std::string community;
    int generic = -1;
    int specific = -1;
    std::string bytes;
};

/// Receives traps on a port of a loopback address with a large buffer. `take` waits for one;
/// nothing is read otherwise.
class TrapReceiver {
public:
    explicit TrapReceiver(unsigned short port = 0, const char* host = "127.0.0.1")
        : m_socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        const int wanted = 32 << 20;
        if (::setsockopt(m_socket.get(), SOL_SOCKET, SO_RCVBUFFORCE, &wanted, sizeof wanted) != 0) {
            ::setsockopt(m_socket.get(), SOL_SOCKET, SO_RCVBUF, &wanted, sizeof wanted);
        }
        sockaddr_in address{};
        socklen_t length = sizeof address;
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        ::inet_pton(AF_INET, host, &address.sin_addr);
        auto* const any = reinterpret_cast<sockaddr*>(&address);
        if (::bind(m_socket.get(), any, length) != 0 ||
            ::getsockname(m_socket.get(), any, &length) != 0) {
            throw std::runtime_error("no port to receive traps on");
        }
        m_port = ntohs(address.sin_port);
    }

    std::string port() const { return std::to_string(m_port); }
    int descriptor() const { return m_socket.get(); }

    /// The next datagram; none when none came in time.
    std::optional<std::string> takeBytes(std::chrono::milliseconds limit) const {
        pollfd ready{m_socket.get(), POLLIN, 0};
        if (::poll(&ready, 1, static_cast<int>(limit.count())) <= 0) {
            return std::nullopt;
        }
        std::string bytes(64U << 10U, '\0');
        const ssize_t count = ::recv(m_socket.get(), bytes.data(), bytes.size(), 0);
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return bytes;
    }
    /// The next trap; none when none came in time, or what came is no trap.
    std::optional<ReceivedTrap> take(
        std::chrono::milliseconds limit = std::chrono::seconds(5)) const {
        const std::optional<std::string> bytes = takeBytes(limit);
        return bytes ? parse(*bytes) : std::nullopt;
    }
    /// Whether there is nothing. What a call on this machine has sent is there when it returns.
    bool isEmpty() const { return !takeBytes(std::chrono::milliseconds(0)); }

    static std::optional<ReceivedTrap> parse(const std::string& bytes) {
        ReceivedTrap trap;
        trap.bytes = bytes;
        BerCursor cursor(bytes);
        constexpr std::size_t kTrapOfVersion1 = 0xA4;
        const bool isTrap = cursor.enter() && cursor.skip(1) &&
                            takeText(bytes, cursor, trap.community) && cursor.skip(1) &&
                            cursor.tag() == kTrapOfVersion1 && cursor.enter() && cursor.skip(2) &&
                            takeNumber(bytes, cursor, trap.generic) && cursor.skip(1) &&
                            takeNumber(bytes, cursor, trap.specific);
        return isTrap ? std::optional(trap) : std::nullopt;
    }

private:
    static bool takeText(const std::string& bytes, const BerCursor& cursor, std::string& text) {
        std::size_t begin = 0;
        std::size_t length = 0;
        const bool isThere = cursor.content(begin, length);
        text = isThere ? bytes.substr(begin, length) : std::string();
        return isThere;
    }
    static bool takeNumber(const std::string& bytes, const BerCursor& cursor, int& number) {
        std::string digits;
        const bool isThere = takeText(bytes, cursor, digits);
        number = !digits.empty() && (digits[0] & 0x80) != 0 ? -1 : 0;
        for (const char digit : digits) {
            number = number * 256 + static_cast<unsigned char>(digit);
        }
        return isThere;
    }

    FileDescriptor m_socket;
    unsigned short m_port = 0;
};

/// A loopback port on which nobody receives anything.
inline std::string freeUdpPort() {
    return TrapReceiver().port();
}

}  // namespace vireo::test
