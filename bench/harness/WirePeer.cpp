#include "harness/WirePeer.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>

#include "harness/Failure.h"

namespace vireo::bench {
namespace {

constexpr std::size_t kRoom = 256U << 10U;
constexpr std::string_view kProtocol = "vireo_rpc";
constexpr std::string_view kInterface = "LocalMgmtIfc";

}  // namespace

WirePeer::WirePeer(const std::string& socketPath, std::string_view channel)
    : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)), m_input(kRoom, '\0') {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    require(socketPath.size() < sizeof address.sun_path, "the path of a socket is too long");
    std::memcpy(address.sun_path, socketPath.c_str(), socketPath.size() + 1);
    if (!m_socket || ::connect(m_socket.get(), reinterpret_cast<const sockaddr*>(&address),
                               sizeof address) != 0) {
        failSystem("connect");
    }
    std::string hello;
    FrameCodec::append(hello, FrameKind::eHello, 0, {}, {}, channel);
    send(hello);
    receive(FrameKind::eWelcome);
}

std::string WirePeer::request(std::string_view payload) {
    std::string frame;
    FrameCodec::append(frame, FrameKind::eRequest, 1, kProtocol, kInterface, payload);
    return frame;
}

void WirePeer::send(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0) {
            failSystem("send");
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

bool WirePeer::take(std::string_view& payload, FrameKind& kind) {
    const std::string_view bytes(m_input.data() + m_begin, m_end - m_begin);
    FrameHeader header;
    const FrameCodec::Verdict verdict = FrameCodec::parseHeader(bytes, header);
    if (verdict == FrameCodec::Verdict::eIncomplete) {
        return false;
    }
    require(verdict == FrameCodec::Verdict::eHeader, "the phone sent what is no frame");
    const std::size_t start = FrameCodec::kHeaderSize + header.nameLength();
    if (bytes.size() < start + header.payloadLength) {
        return false;
    }
    kind = header.kind;
    payload = bytes.substr(start, header.payloadLength);
    m_begin += start + header.payloadLength;
    return true;
}

std::string_view WirePeer::receive(FrameKind wanted) {
    std::string_view payload;
    FrameKind kind{};
    while (!take(payload, kind)) {
        if (m_begin > 0) {
            std::memmove(m_input.data(), m_input.data() + m_begin, m_end - m_begin);
            m_end -= m_begin;
            m_begin = 0;
        }
        const ssize_t got =
            ::recv(m_socket.get(), m_input.data() + m_end, m_input.size() - m_end, 0);
        require(got > 0, "the phone closed a connection");
        m_end += static_cast<std::size_t>(got);
    }
    require(kind == wanted, "the phone sent an unexpected kind of frame");
    return payload;
}

}  // namespace vireo::bench
