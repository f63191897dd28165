#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "CallStatus.h"
#include "messages/FileDescriptor.h"
#include "messages/FrameCodec.h"

namespace vireo {

/// The frames of a connection to the service: what was received and not yet taken, and what was
/// appended and has not left yet. Used by one thread at a time. Private to the library.
class FrameStream {
public:
    using Clock = std::chrono::steady_clock;

    struct Frame {
        FrameHeader header;
        // Valid until the next `receive` or `await`.
        std::string_view protocol;
        std::string_view interfaceName;
        std::string_view payload;
    };

    /// Connects to the Unix socket within `timeout`. Empty on failure; `error` then says why.
    static FileDescriptor connect(const std::string& path, std::chrono::milliseconds timeout,
                                  std::string& error);

    explicit FrameStream(FileDescriptor socket) : m_socket(std::move(socket)) {}

    /// Ends the stream for good. The first reason stays.
    void close(std::string reason);
    bool isOpen() const { return static_cast<bool>(m_socket); }
    /// Empty while it is open.
    const std::string& closeReason() const { return m_closeReason; }
    /// -1 once it is closed.
    int socket() const { return m_socket.get(); }

    /// Appends one frame to what is to leave. The names and the payload fit into a frame.
    void append(FrameKind kind, std::uint32_t correlation, std::string_view protocol,
                std::string_view interfaceName, std::string_view payload);
    /// Sends what the socket takes now.
    void sendPending();
    bool hasUnsent() const { return m_sent < m_out.size(); }

    /// Takes in what is there, without waiting.
    void receive();
    /// The next whole frame that was received. None: more has to come, or the stream is closed now
    /// because what came is no frame.
    std::optional<Frame> takeFrame();
    /// Whether `takeFrame` has something to do.
    bool hasFrame() const;

    /// Waits until something can be received or sent, and receives what is there. eDone, eTimedOut
    /// at `deadline`, or eDisconnected.
    CallStatus await(Clock::time_point deadline);

private:
    std::string_view untaken() const { return std::string_view(m_in).substr(m_taken); }

    FileDescriptor m_socket;  // empty once the stream ended
    std::string m_closeReason;
    std::string m_in;
    std::size_t m_taken = 0;  // so much of m_in has been handled
    std::string m_out;
    std::size_t m_sent = 0;  // so much of m_out has left
};

}  // namespace vireo
