#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "CallStatus.h"
#include "messages/FileDescriptor.h"
#include "messages/FrameCodec.h"

namespace vireo {

/// One end of a peer's stream to the service: the socket, the greeting and the frames. Whoever
/// waits for a reply is the reader; between calls what arrives stays in the socket. Used by one
/// thread at a time. Private to the library: its users see `LocalMgmtClient`.
class PeerConnection {
public:
    using Clock = std::chrono::steady_clock;

    /// Connects to the Unix socket and greets as `channelName`, all within `timeout`. Null on
    /// failure; `error` then names the path and the cause.
    static std::unique_ptr<PeerConnection> open(const std::string& socketPath,
                                                const std::string& channelName,
                                                std::chrono::milliseconds timeout,
                                                std::string& error);
    PeerConnection(const PeerConnection&) = delete;
    PeerConnection& operator=(const PeerConnection&) = delete;

    /// The name that the service gave in its welcome.
    const std::string& channelName() const { return m_channelName; }
    /// Why the connection ended; empty while it stands.
    const std::string& closeReason() const { return m_closeReason; }

    /// Sends one request and waits for its reply until `deadline`. Other frames that arrive are
    /// served or dropped: a request gets an empty reply, a reply to an earlier request is dropped.
    /// `reply` is changed by eDone only. The names and the payload fit into a frame.
    CallStatus exchange(std::string_view protocol, std::string_view interfaceName,
                        std::string_view payload, Clock::time_point deadline, std::string& reply);

private:
    struct Frame {
        FrameHeader header;
        std::string_view payload;  // valid until the next receive
    };

    explicit PeerConnection(FileDescriptor socket) : m_socket(std::move(socket)) {}

    void close(std::string reason);
    bool greet(const std::string& channelName, Clock::time_point deadline, std::string& cause);

    CallStatus flush(Clock::time_point deadline);
    CallStatus await(Clock::time_point deadline);
    void sendPending();
    void receive();
    std::optional<Frame> takeFrame();
    void serve(const Frame& frame);

    FileDescriptor m_socket;  // empty once the connection ended
    std::string m_channelName;
    std::string m_closeReason;
    std::string m_in;
    std::size_t m_taken = 0;  // so much of m_in has been handled
    std::string m_out;
    std::size_t m_sent = 0;  // so much of m_out has left
    std::uint32_t m_lastCorrelation = 0;
};

}  // namespace vireo
