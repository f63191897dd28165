#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "LocalMgmtClient.h"
#include "messages/FileDescriptor.h"
#include "messages/FrameCodec.h"
#include "service/Method.h"
#include "support/FramePeer.h"
#include "support/TemporaryDirectory.h"

namespace vireo {

/// The service's end of one connection, for a script that plays the service.
class PeerStream : public test::FramePeer {
public:
    using FramePeer::FramePeer;

    void send(FrameKind kind, std::uint32_t correlation, std::string_view payload);
    /// The same for the agent of the other end.
    void sendToAgent(FrameKind kind, std::uint32_t correlation, std::string_view payload);
    /// Each byte leaves only after the other end has read the one before.
    void writeOneByOne(std::string_view bytes);

    /// Takes the next request, which is to hold these texts, and gives its number.
    std::uint32_t take(std::initializer_list<std::string_view> texts = {});
    /// Takes the next request and answers it.
    void reply(std::string_view payload);
    void reply(const Method& method);
    /// Takes the next request, which is to have this payload, and answers it.
    void expect(std::string_view request, std::string_view answer);
    /// Asks the agent, and expects its answer next.
    std::string askAgent(std::uint32_t correlation, std::string_view payload);
};

/// Listens on a Unix socket of its own and runs a script on the first connection.
class ScriptedPeer {
public:
    using Script = std::function<void(PeerStream&)>;

    /// The script begins behind the greeting, which gives the name "client-1".
    explicit ScriptedPeer(Script script);
    /// The script greets.
    struct Ungreeted {};
    ScriptedPeer(Ungreeted, Script script);
    /// Waits for the end of the script, so clients are to be gone before.
    ~ScriptedPeer();
    ScriptedPeer(const ScriptedPeer&) = delete;
    ScriptedPeer& operator=(const ScriptedPeer&) = delete;

    const std::string& socketPath() const { return m_path; }

private:
    test::TemporaryDirectory m_directory;
    const std::string m_path;
    FileDescriptor m_listener;
    std::thread m_thread;
};

/// Time-outs that are not to pass, and one that is.
inline constexpr std::chrono::milliseconds kPatience{10000};
inline constexpr std::chrono::milliseconds kBrief{30};

/// For a connection to the peer whose calls wait for kPatience.
LocalMgmtClient::Options optionsFor(const ScriptedPeer& peer);
std::unique_ptr<LocalMgmtClient> connectBy(const LocalMgmtClient::Options& options);
/// A client with these options; the agent may be null.
std::unique_ptr<LocalMgmtClient> connectTo(
    const ScriptedPeer& peer, MgmtAgentIfc* agent = nullptr,
    LocalMgmtClient::Protocol protocol = LocalMgmtClient::Protocol::eRpc);

/// The reply to a call that is to succeed.
std::string ask(LocalMgmtClient& client, const std::string& payload);

/// Serves until the peer is gone.
void serveToTheEnd(LocalMgmtClient& client);

/// Replies of methods that answer yes or no, with a text, and with a record.
Method resultReply(const std::string& name, bool result);
Method textReply(const std::string& name, const std::string& parameter, const std::string& text);
Method recordReply(const std::string& name, bool result, const std::string& record);
/// The reply to an announcement that reached so many observers.
Method announcedReply(int observers);

std::string encoded(const Method& method);
std::string frame(FrameKind kind, std::uint32_t correlation, std::string_view payload);
/// One for an agent.
std::string agentFrame(FrameKind kind, std::uint32_t correlation, std::string_view payload);
/// One for a client that hears of its downloads.
std::string callbackFrame(FrameKind kind, std::uint32_t correlation, std::string_view payload);

}  // namespace vireo
