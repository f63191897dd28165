#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "CallStatus.h"
#include "FrameStream.h"
#include "ReadyDescriptor.h"

namespace vireo {

/// One end of a peer's connection to the service: the greeting, the calls of this process and those
/// of the service. Used by one thread at a time; a call may be made from within one of the
/// service's. Private to the library: its users see `LocalMgmtClient`.
class PeerConnection {
public:
    using Clock = FrameStream::Clock;
    /// Serves a message of the service and gives the reply, which fits into a frame; that of a
    /// notification is not used. The names are valid until it makes a call, the payload to its end.
    using Server = std::function<std::string(
        std::string_view protocol, std::string_view interfaceName, std::string_view payload)>;

    /// Connects to the Unix socket and greets as `channelName`, all within `timeout`. Null on
    /// failure; `error` then names the path and the cause.
    static std::unique_ptr<PeerConnection> open(const std::string& socketPath,
                                                const std::string& channelName,
                                                std::chrono::milliseconds timeout, Server server,
                                                std::string& error);
    PeerConnection(const PeerConnection&) = delete;
    PeerConnection& operator=(const PeerConnection&) = delete;

    /// The name that the service gave in its welcome.
    const std::string& channelName() const { return m_channelName; }
    /// Why the connection ended; empty while it stands.
    const std::string& closeReason() const { return m_stream.closeReason(); }
    /// Readable while `serveReady` has something to do, the end of the connection included.
    int readyDescriptor() const { return m_ready.get(); }

    /// Sends one request and waits for its reply until `deadline`. Requests and notifications of
    /// the service that arrive before it are served. `reply` is changed by eDone only. The names
    /// and the payload fit into a frame.
    CallStatus exchange(std::string_view protocol, std::string_view interfaceName,
                        std::string_view payload, Clock::time_point deadline, std::string& reply);

    /// Serves what has arrived, without waiting for more; `served` says whether there was anything.
    /// eDone or eDisconnected.
    CallStatus serveReady(bool& served);

private:
    struct Wait {
        std::uint32_t correlation = 0;
        bool isOver = false;
        std::string reply;
    };
    struct Notification {
        std::string protocol;
        std::string interfaceName;
        std::string payload;

        std::size_t size() const { return sizeof *this + payload.size(); }
    };
    class OpenWait;
    class Depth;

    PeerConnection(FileDescriptor socket, Server server);

    bool greet(const std::string& channelName, Clock::time_point deadline, std::string& cause);
    CallStatus converse(Wait& wait, std::string_view protocol, std::string_view interfaceName,
                        std::string_view payload, Clock::time_point deadline);
    CallStatus flush(Clock::time_point deadline);
    bool step();
    void handle(const FrameStream::Frame& frame);
    void takeReply(const FrameStream::Frame& frame);
    void answer(const FrameStream::Frame& frame);
    void takeNotification(const FrameStream::Frame& frame);
    std::string serve(std::string_view protocol, std::string_view interfaceName,
                      std::string_view payload);
    void updateReadiness();

    FrameStream m_stream;
    ReadyDescriptor m_ready;
    const Server m_server;
    std::string m_channelName;
    std::uint32_t m_lastCorrelation = 0;
    std::vector<Wait*> m_waits;            // of the calls under way, the innermost last
    std::deque<Notification> m_postponed;  // those that came while another message was served
    std::size_t m_postponedBytes = 0;
    unsigned m_serving = 0;  // how many messages are being served, one in another
};

}  // namespace vireo
