#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "LocalMgmtClient.h"
#include "messages/FileDescriptor.h"
#include "messages/FrameCodec.h"
#include "service/Method.h"
#include "support/TemporaryDirectory.h"

namespace vireo {

/// The service's end of one connection, for a script that plays the service.
class PeerStream {
public:
    struct Received {
        FrameHeader header;
        std::string protocol;
        std::string interfaceName;
        std::string payload;
    };

    explicit PeerStream(FileDescriptor socket);

    /// The next frame; none at the end of the stream, or when none comes for ten seconds.
    std::optional<Received> read();
    void send(FrameKind kind, std::uint32_t correlation, std::string_view payload);
    /// The same for the agent of the other end.
    void sendToAgent(FrameKind kind, std::uint32_t correlation, std::string_view payload);
    void sendBytes(std::string_view bytes);
    /// Each byte leaves only after the other end has read the one before.
    void sendBytesOneByOne(std::string_view bytes);
    void close() { m_socket.reset(); }

    /// Takes the greeting and gives the name.
    void welcome(std::string_view channelName = "client-1");
    /// Takes the next request and answers it.
    void reply(std::string_view payload);
    void reply(const Method& method);
    /// Asks the agent, and expects its answer next.
    std::string askAgent(std::uint32_t correlation, std::string_view payload);

private:
    std::optional<std::string> readExactly(std::size_t size);

    FileDescriptor m_socket;
};

/// Listens on a Unix socket of its own and runs a script on the first connection.
class ScriptedPeer {
public:
    using Script = std::function<void(PeerStream&)>;

    explicit ScriptedPeer(Script script);
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

/// A client of the peer that waits for kPatience; the agent may be null.
std::unique_ptr<LocalMgmtClient> connectTo(
    const ScriptedPeer& peer, MgmtAgentIfc* agent = nullptr,
    LocalMgmtClient::Protocol protocol = LocalMgmtClient::Protocol::eRpc);

/// The reply of a method that answers with a record.
Method recordReply(const std::string& name, bool result, const std::string& record);

/// A listening Unix socket at `path`.
FileDescriptor listenAt(const std::string& path);
std::string encoded(const Method& method);
std::string frame(FrameKind kind, std::uint32_t correlation, std::string_view payload);
/// One for an agent.
std::string agentFrame(FrameKind kind, std::uint32_t correlation, std::string_view payload);
/// One for a client that hears of its downloads.
std::string callbackFrame(FrameKind kind, std::uint32_t correlation, std::string_view payload);

}  // namespace vireo
