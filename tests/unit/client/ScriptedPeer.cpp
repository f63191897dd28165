#include "unit/client/ScriptedPeer.h"

#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "messages/RpcAdapter.h"

namespace vireo {
namespace {

constexpr int kPatienceSeconds = 10;

}  // namespace

FileDescriptor listenAt(const std::string& path) {
    FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0)
        << path << ": " << std::strerror(errno);
    EXPECT_EQ(::listen(listener.get(), 4), 0);
    return listener;
}

std::string encoded(const Method& method) {
    std::string text;
    RpcAdapter::encodeText(method, text);
    return text;
}

std::string frame(FrameKind kind, std::uint32_t correlation, std::string_view payload) {
    std::string bytes;
    FrameCodec::append(bytes, kind, correlation, {}, {}, payload);
    return bytes;
}

std::string agentFrame(FrameKind kind, std::uint32_t correlation, std::string_view payload) {
    std::string bytes;
    FrameCodec::append(bytes, kind, correlation, "vireo_text", "MgmtAgentIfc", payload);
    return bytes;
}

std::string callbackFrame(FrameKind kind, std::uint32_t correlation, std::string_view payload) {
    std::string bytes;
    FrameCodec::append(bytes, kind, correlation, "vireo_text", "LocalMgmtCallbackIfc", payload);
    return bytes;
}

PeerStream::PeerStream(FileDescriptor socket) : m_socket(std::move(socket)) {
    const timeval patience{kPatienceSeconds, 0};
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    ::setsockopt(m_socket.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
}

std::optional<std::string> PeerStream::readExactly(std::size_t size) {
    std::string bytes(size, '\0');
    if (size > 0 &&
        ::recv(m_socket.get(), bytes.data(), size, MSG_WAITALL) != static_cast<ssize_t>(size)) {
        return std::nullopt;
    }
    return bytes;
}

std::optional<PeerStream::Received> PeerStream::read() {
    const auto header = readExactly(FrameCodec::kHeaderSize);
    Received received;
    if (!header ||
        FrameCodec::parseHeader(*header, received.header) != FrameCodec::Verdict::eHeader) {
        return std::nullopt;
    }
    const auto protocol = readExactly(received.header.protocolLength);
    const auto interfaceName = readExactly(received.header.interfaceLength);
    const auto payload = readExactly(received.header.payloadLength);
    if (!protocol || !interfaceName || !payload) {
        return std::nullopt;
    }
    received.protocol = *protocol;
    received.interfaceName = *interfaceName;
    received.payload = *payload;
    return received;
}

void PeerStream::sendBytes(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(m_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

void PeerStream::sendBytesOneByOne(std::string_view bytes) {
    for (const char byte : bytes) {
        sendBytes(std::string_view(&byte, 1));
        int unread = 1;
        while (::ioctl(m_socket.get(), SIOCOUTQ, &unread) == 0 && unread > 0) {
            std::this_thread::yield();
        }
    }
}

void PeerStream::send(FrameKind kind, std::uint32_t correlation, std::string_view payload) {
    sendBytes(frame(kind, correlation, payload));
}

void PeerStream::sendToAgent(FrameKind kind, std::uint32_t correlation, std::string_view payload) {
    sendBytes(agentFrame(kind, correlation, payload));
}

std::string PeerStream::askAgent(std::uint32_t correlation, std::string_view payload) {
    sendToAgent(FrameKind::eRequest, correlation, payload);
    const auto answer = read();
    if (!answer || answer->header.kind != FrameKind::eReply ||
        answer->header.correlation != correlation) {
        ADD_FAILURE() << "no answer of the agent to " << payload;
        return {};
    }
    return answer->payload;
}

void PeerStream::welcome(std::string_view channelName) {
    const auto hello = read();
    ASSERT_TRUE(hello);
    EXPECT_EQ(hello->header.kind, FrameKind::eHello);
    send(FrameKind::eWelcome, hello->header.correlation, channelName);
}

void PeerStream::reply(std::string_view payload) {
    const auto request = read();
    ASSERT_TRUE(request);
    EXPECT_EQ(request->header.kind, FrameKind::eRequest);
    send(FrameKind::eReply, request->header.correlation, payload);
}

void PeerStream::reply(const Method& method) {
    reply(encoded(method));
}

ScriptedPeer::ScriptedPeer(Script script)
    : m_path(m_directory.file("socket")), m_listener(listenAt(m_path)) {
    m_thread = std::thread([this, script = std::move(script)] {
        pollfd waited{m_listener.get(), POLLIN, 0};
        if (::poll(&waited, 1, kPatienceSeconds * 1000) != 1) {
            ADD_FAILURE() << "nobody connected";
            return;
        }
        PeerStream stream(
            FileDescriptor(::accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC)));
        script(stream);
    });
}

ScriptedPeer::~ScriptedPeer() {
    m_thread.join();
}

std::unique_ptr<LocalMgmtClient> connectTo(const ScriptedPeer& peer, MgmtAgentIfc* agent,
                                           LocalMgmtClient::Protocol protocol) {
    LocalMgmtClient::Options options;
    options.socketPath = peer.socketPath();
    options.timeout = kPatience;
    options.protocol = protocol;
    options.agent = agent;
    std::string error;
    auto client = LocalMgmtClient::connect(options, error);
    EXPECT_TRUE(client) << error;
    return client;
}

Method recordReply(const std::string& name, bool result, const std::string& record) {
    Method method(name, Method::eResponse);
    method.addBoolParameter("result", Parameter::eOut, result);
    method.addStringParameter("manageableData", Parameter::eOut, record);
    return method;
}

}  // namespace vireo
