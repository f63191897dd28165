#include "support/FramePeer.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <utility>

namespace vireo::test {
namespace {

constexpr int kDeadlineMilliseconds = 30000;
constexpr std::size_t kReadSize = 256U << 10U;

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

}  // namespace

FileDescriptor listenAt(const std::string& path) {
    FileDescriptor listening(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_un address = addressOf(path);
    EXPECT_TRUE(
        listening.get() >= 0 &&
        ::bind(listening.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        ::listen(listening.get(), 4) == 0)
        << path;
    return listening;
}

FramePeer::FramePeer() : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {}

FramePeer::FramePeer(const std::string& socketPath) : FramePeer() {
    connect(socketPath);
}

FramePeer::FramePeer(FileDescriptor socket) : m_socket(std::move(socket)) {}

bool FramePeer::connect(const std::string& socketPath) {
    const sockaddr_un address = addressOf(socketPath);
    return ::connect(m_socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
           0;
}

bool FramePeer::waitFor(short events) const {
    pollfd entry{m_socket.get(), events, 0};
    return entry.fd >= 0 && ::poll(&entry, 1, kDeadlineMilliseconds) == 1;
}

bool FramePeer::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count =
            ::send(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EAGAIN || !waitFor(POLLOUT)) {
            return false;
        }
    }
    return true;
}

std::optional<ReceivedFrame> FramePeer::read() {
    for (;;) {
        const std::string_view bytes = std::string_view(m_input).substr(m_used);
        FrameHeader header;
        const FrameCodec::Verdict verdict = FrameCodec::parseHeader(bytes, header);
        const std::size_t names = FrameCodec::kHeaderSize + header.nameLength();
        if (verdict == FrameCodec::Verdict::eHeader &&
            bytes.size() >= names + header.payloadLength) {
            m_used += names + header.payloadLength;
            return ReceivedFrame{
                header.kind, header.correlation,
                std::string(bytes.substr(FrameCodec::kHeaderSize, header.protocolLength)),
                std::string(bytes.substr(FrameCodec::kHeaderSize + header.protocolLength,
                                         header.interfaceLength)),
                std::string(bytes.substr(names, header.payloadLength))};
        }
        m_input.erase(0, m_used);
        m_used = 0;
        const std::size_t start = m_input.size();
        m_input.resize(start + kReadSize);
        const ssize_t count =
            waitFor(POLLIN) ? ::recv(m_socket.get(), m_input.data() + start, kReadSize, 0) : -1;
        m_input.resize(start + static_cast<std::size_t>(count > 0 ? count : 0));
        if (count <= 0) {
            return std::nullopt;
        }
    }
}

void FramePeer::endSending() {
    ::shutdown(m_socket.get(), SHUT_WR);
}

void FramePeer::leave() {
    endSending();
    while (read()) {
    }
}

std::string FramePeer::hello(std::string_view channel) {
    write(frame(FrameKind::eHello, 1, channel, "", ""));
    const auto answer = read();
    if (!answer) {
        return "no answer";
    }
    return answer->kind == FrameKind::eWelcome ? answer->payload : "refused: " + answer->payload;
}

std::string FramePeer::ask(std::string_view payload, std::string_view interfaceName,
                           std::string_view protocol) {
    const std::uint32_t correlation = ++m_lastCorrelation;
    write(frame(FrameKind::eRequest, correlation, payload, protocol, interfaceName));
    const auto answer = read();
    if (!answer || answer->kind != FrameKind::eReply || answer->correlation != correlation ||
        answer->protocol != protocol || answer->interfaceName != interfaceName) {
        return "no reply";
    }
    return answer->payload;
}

std::string FramePeer::frame(FrameKind kind, std::uint32_t correlation, std::string_view payload,
                             std::string_view protocol, std::string_view interfaceName) {
    std::string out;
    FrameCodec::append(out, kind, correlation, protocol, interfaceName, payload);
    return out;
}

}  // namespace vireo::test
