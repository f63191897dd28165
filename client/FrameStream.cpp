#include "FrameStream.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace vireo {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t kReceiveChunk = 64U << 10U;

std::string describeConnectError(int error) {
    switch (error) {
        case ENOENT:
            return "no such socket (is vireod running?)";
        case ECONNREFUSED:
            return "nobody listens there (is vireod running?)";
        case EACCES:
        case EPERM:
            return "permission denied";
        case EAGAIN:
            return "the service accepts no connection in time";
        default:
            return std::generic_category().message(error);
    }
}

bool makeAddress(const std::string& path, sockaddr_un& address) {
    address.sun_family = AF_UNIX;
    // A zero byte first would name an abstract socket, one in the middle would cut the path.
    if (path.empty() || path.size() >= sizeof address.sun_path ||
        path.find('\0') != std::string::npos) {
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

// A non-blocking connect to a Unix socket fails at once when the listener's queue is full; the
// send time-out makes a blocking one wait, but not for ever.
int connectWithin(int socket, const sockaddr_un& address, milliseconds timeout) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(timeout);
    timeval limit{};
    limit.tv_sec = static_cast<decltype(limit.tv_sec)>(seconds.count());
    limit.tv_usec = static_cast<decltype(limit.tv_usec)>((timeout - seconds).count() * 1000);
    ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    for (;;) {
        if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
            return 0;
        }
        if (errno != EINTR) {
            return errno;
        }
    }
}

}  // namespace

FileDescriptor FrameStream::connect(const std::string& path, milliseconds timeout,
                                    std::string& error) {
    sockaddr_un address{};
    if (!makeAddress(path, address)) {
        error = "not a path that a socket can have (1 to " +
                std::to_string(sizeof address.sun_path - 1) + " bytes)";
        return {};
    }
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!socket) {
        error = std::generic_category().message(errno);
        return {};
    }
    if (const int failure = connectWithin(socket.get(), address, timeout); failure != 0) {
        error = describeConnectError(failure);
        return {};
    }
    return socket;
}

void FrameStream::append(FrameKind kind, std::uint32_t correlation, std::string_view protocol,
                         std::string_view interfaceName, std::string_view payload) {
    FrameCodec::append(m_out, kind, correlation, protocol, interfaceName, payload);
}

void FrameStream::close(std::string reason) {
    if (m_socket) {
        m_socket.reset();
        m_closeReason = std::move(reason);
    }
}

CallStatus FrameStream::await(Clock::time_point deadline) {
    if (!m_socket) {
        return CallStatus::eDisconnected;
    }
    const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) {
        return CallStatus::eTimedOut;
    }
    pollfd waited{m_socket.get(), static_cast<short>(m_out.empty() ? POLLIN : POLLIN | POLLOUT), 0};
    const int ready = ::poll(&waited, 1, left > INT32_MAX ? INT32_MAX : static_cast<int>(left));
    if (ready < 0 && errno != EINTR) {
        close(std::generic_category().message(errno));
        return CallStatus::eDisconnected;
    }
    if (ready > 0 && (waited.revents & ~POLLOUT) != 0) {
        receive();
    }
    return CallStatus::eDone;
}

void FrameStream::sendPending() {
    while (m_socket && m_sent < m_out.size()) {
        const ssize_t sent = ::send(m_socket.get(), m_out.data() + m_sent, m_out.size() - m_sent,
                                    MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent >= 0) {
            m_sent += static_cast<std::size_t>(sent);
        } else if (errno == EAGAIN) {
            return;
        } else if (errno == EPIPE || errno == ECONNRESET) {
            // The other end is gone, but what it sent before, such as the reason, can still be
            // read; reading finds the end.
            break;
        } else if (errno != EINTR) {
            close(std::generic_category().message(errno));
            return;
        }
    }
    m_out.clear();
    m_sent = 0;
}

void FrameStream::receive() {
    m_in.erase(0, m_taken);
    m_taken = 0;
    char chunk[kReceiveChunk];  // not cleared first, it is large
    const ssize_t got = ::recv(m_socket.get(), chunk, sizeof chunk, MSG_DONTWAIT);
    if (got > 0) {
        m_in.append(chunk, static_cast<std::size_t>(got));
    } else if (got == 0 || (errno != EAGAIN && errno != EINTR)) {
        close("the service closed the connection");
    }
}

std::optional<FrameStream::Frame> FrameStream::takeFrame() {
    const std::string_view bytes = untaken();
    Frame frame;
    switch (FrameCodec::parseHeader(bytes, frame.header)) {
        case FrameCodec::Verdict::eIncomplete:
            return std::nullopt;
        case FrameCodec::Verdict::eNotOurs:
            close("what answers there is not a vireo service");
            return std::nullopt;
        case FrameCodec::Verdict::eWrongVersion:
            close("the service speaks another version of the protocol");
            return std::nullopt;
        case FrameCodec::Verdict::eUnknownKind:
            close("the service sent a frame of an unknown kind");
            return std::nullopt;
        case FrameCodec::Verdict::eHeader:
            break;
    }
    if (frame.header.payloadLength > FrameCodec::kMaximumPayload) {
        close("the service announced a frame of " + std::to_string(frame.header.payloadLength) +
              " bytes, more than is allowed");
        return std::nullopt;
    }
    const std::size_t start = FrameCodec::kHeaderSize + frame.header.nameLength();
    const std::size_t size = start + frame.header.payloadLength;
    if (bytes.size() < size) {
        return std::nullopt;
    }
    const std::string_view names = bytes.substr(FrameCodec::kHeaderSize);
    frame.protocol = names.substr(0, frame.header.protocolLength);
    frame.interfaceName = names.substr(frame.header.protocolLength, frame.header.interfaceLength);
    frame.payload = bytes.substr(start, frame.header.payloadLength);
    m_taken += size;
    return frame;
}

bool FrameStream::hasFrame() const {
    FrameHeader header;
    switch (FrameCodec::parseHeader(untaken(), header)) {
        case FrameCodec::Verdict::eIncomplete:
            return false;
        case FrameCodec::Verdict::eHeader:
            return header.payloadLength > FrameCodec::kMaximumPayload ||
                   untaken().size() >=
                       FrameCodec::kHeaderSize + header.nameLength() + header.payloadLength;
        default:
            return true;  // the end of the stream
    }
}

}  // namespace vireo
