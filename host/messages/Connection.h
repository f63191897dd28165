#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "messages/FileDescriptor.h"
#include "messages/FrameCodec.h"
#include "messages/InputBuffer.h"

namespace vireo {

/// One frame of a peer. The views point into the connection's buffer and hold until it receives
/// again.
struct Frame {
    FrameHeader header;
    std::string_view protocol;
    std::string_view interfaceName;
    std::string_view payload;
};

/// The stream of one peer: bytes in, cut into frames, and bytes out. Knows nothing about what
/// frames mean. Used on the message thread.
class Connection {
public:
    enum class Next {
        eNothing,       ///< no whole frame is there
        eFrame,         ///< a whole frame
        eOversized,     ///< a frame without its payload, which is thrown away as it arrives
        eNotOurs,       ///< no frame, and nothing behind it can be read
        eWrongVersion,  ///< likewise
        eUnknownKind,   ///< likewise
    };
    enum class Received { eBytes, eNothing, eEnd };

    /// Takes over a connected, non-blocking stream socket. Payloads of more than `maximumPayload`
    /// bytes are not taken.
    explicit Connection(FileDescriptor socket,
                        std::uint32_t maximumPayload = FrameCodec::kMaximumPayload)
        : m_socket(std::move(socket)), m_maximumPayload(maximumPayload) {}

    int descriptor() const { return m_socket.get(); }
    std::uint32_t maximumPayload() const { return m_maximumPayload; }

    /// Reads what is there, at most `InputBuffer::kReadSize` bytes. A broken connection is an end.
    Received receive();
    /// Takes the next frame out of what was received.
    Next next(Frame& frame);

    void send(FrameKind kind, std::uint32_t correlation, std::string_view protocol,
              std::string_view interfaceName, std::string_view payload);
    /// Hands all frames that wait to the socket, in one call. What it does not take stays. False
    /// when the connection is broken.
    bool flush();
    /// Bytes that the peer has not taken yet.
    std::size_t unsent() const { return m_output.size() - m_sent; }

    /// From now on nothing is read; the connection ends when all is sent.
    void finish() { m_finishing = true; }
    bool finishing() const { return m_finishing; }

    /// The channel name; empty before the peer was welcomed.
    const std::string& channel() const { return m_channel; }
    void setChannel(std::string channel) { m_channel = std::move(channel); }
    /// The peer for a log line: its channel name, before that its process.
    std::string label() const;

    /// The epoll events that it is registered for; kept here for the loop.
    std::uint32_t interest() const { return m_interest; }
    void setInterest(std::uint32_t events) { m_interest = events; }

private:
    void skipOversized();

    FileDescriptor m_socket;
    std::uint32_t m_maximumPayload;
    InputBuffer m_input;
    std::string m_output;
    std::size_t m_sent = 0;       ///< how much of the output's front is out
    std::uint64_t m_skipped = 0;  ///< bytes of an oversized payload that are still to come
    std::string m_channel;
    std::uint32_t m_interest = 0;
    bool m_finishing = false;
};

}  // namespace vireo
