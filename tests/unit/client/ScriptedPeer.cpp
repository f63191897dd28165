#include "unit/client/ScriptedPeer.h"

#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <utility>

#include "messages/RpcAdapter.h"

namespace vireo {
namespace {

constexpr int kPatienceSeconds = 10;

}  // namespace

std::string encoded(const Method& method) {
    std::string text;
    RpcAdapter::encodeText(method, text);
    return text;
}

std::string frame(FrameKind kind, std::uint32_t correlation, std::string_view payload) {
    return test::FramePeer::frame(kind, correlation, payload, {}, {});
}

std::string agentFrame(FrameKind kind, std::uint32_t correlation, std::string_view payload) {
    return test::FramePeer::frame(kind, correlation, payload, "vireo_text", "MgmtAgentIfc");
}

std::string callbackFrame(FrameKind kind, std::uint32_t correlation, std::string_view payload) {
    return test::FramePeer::frame(kind, correlation, payload, "vireo_text", "LocalMgmtCallbackIfc");
}

void PeerStream::writeOneByOne(std::string_view bytes) {
    for (const char& byte : bytes) {
        write({&byte, 1});
        int unread = 1;
        while (::ioctl(descriptor(), SIOCOUTQ, &unread) == 0 && unread > 0) {
            std::this_thread::yield();
        }
    }
}

void PeerStream::send(FrameKind kind, std::uint32_t correlation, std::string_view payload) {
    write(vireo::frame(kind, correlation, payload));
}

void PeerStream::sendToAgent(FrameKind kind, std::uint32_t correlation, std::string_view payload) {
    write(agentFrame(kind, correlation, payload));
}

std::string PeerStream::askAgent(std::uint32_t correlation, std::string_view payload) {
    sendToAgent(FrameKind::eRequest, correlation, payload);
    const auto answer = read();
    if (!answer || answer->kind != FrameKind::eReply || answer->correlation != correlation) {
        ADD_FAILURE() << "no answer of the agent to " << payload;
        return {};
    }
    return answer->payload;
}

std::uint32_t PeerStream::take(std::initializer_list<std::string_view> texts) {
    const auto request = read();
    EXPECT_TRUE(request && request->kind == FrameKind::eRequest) << "no request";
    for (const std::string_view text : texts) {
        EXPECT_NE(request.value_or(test::ReceivedFrame{}).payload.find(text), std::string::npos)
            << text;
    }
    return request.value_or(test::ReceivedFrame{}).correlation;
}

void PeerStream::reply(std::string_view payload) {
    send(FrameKind::eReply, take(), payload);
}

void PeerStream::reply(const Method& method) {
    reply(encoded(method));
}

void PeerStream::expect(std::string_view request, std::string_view answer) {
    const auto received = read().value_or(test::ReceivedFrame{});
    EXPECT_EQ(received.payload, request);
    send(FrameKind::eReply, received.correlation, answer);
}

ScriptedPeer::ScriptedPeer(Script script)
    : ScriptedPeer(Ungreeted{}, [script = std::move(script)](PeerStream& stream) {
          const auto hello = stream.read();
          ASSERT_TRUE(hello);
          EXPECT_EQ(hello->kind, FrameKind::eHello);
          stream.send(FrameKind::eWelcome, hello->correlation, "client-1");
          script(stream);
      }) {}

ScriptedPeer::ScriptedPeer(Ungreeted /*unused*/, Script script)
    : m_path(m_directory.file("socket")), m_listener(test::listenAt(m_path)) {
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

LocalMgmtClient::Options optionsFor(const ScriptedPeer& peer) {
    LocalMgmtClient::Options options;
    options.socketPath = peer.socketPath();
    options.timeout = kPatience;
    return options;
}

std::unique_ptr<LocalMgmtClient> connectBy(const LocalMgmtClient::Options& options) {
    std::string error;
    auto client = LocalMgmtClient::connect(options, error);
    EXPECT_TRUE(client) << error;
    return client;
}

std::unique_ptr<LocalMgmtClient> connectTo(const ScriptedPeer& peer, MgmtAgentIfc* agent,
                                           LocalMgmtClient::Protocol protocol) {
    LocalMgmtClient::Options options = optionsFor(peer);
    options.protocol = protocol;
    options.agent = agent;
    return connectBy(options);
}

std::string ask(LocalMgmtClient& client, const std::string& payload) {
    std::string reply;
    EXPECT_EQ(client.callRaw("vireo_text", payload, reply), CallStatus::eDone) << payload;
    return reply;
}

void serveToTheEnd(LocalMgmtClient& client) {
    while (client.serve(kPatience) == CallStatus::eDone) {
    }
}

Method resultReply(const std::string& name, bool result) {
    Method method(name, Method::eResponse);
    method.addBoolParameter("result", Parameter::eOut, result);
    return method;
}

Method textReply(const std::string& name, const std::string& parameter, const std::string& text) {
    Method method(name, Method::eResponse);
    method.addStringParameter(parameter, Parameter::eOut, text);
    return method;
}

Method recordReply(const std::string& name, bool result, const std::string& record) {
    Method method = resultReply(name, result);
    method.addStringParameter("manageableData", Parameter::eOut, record);
    return method;
}

Method announcedReply(int observers) {
    Method method("manageableDataChanged", Method::eResponse);
    method.addIntParameter("numObservers", Parameter::eOut, observers);
    method.addStringParameter("manageableData", Parameter::eOut, "<record></record>");
    return method;
}

}  // namespace vireo
