#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "messages/AwaitedReplies.h"
#include "messages/FileDescriptor.h"
#include "messages/Frame.h"
#include "messages/InputBuffer.h"
#include "messages/OutputQueue.h"

namespace vireo {

/// The stream of one peer: bytes in, cut into frames, and bytes out. Knows nothing about what
/// frames mean. Read by one thread at a time, which has taken that role from `awaited`; written to
/// from every thread. The rest is for the message thread.
class Connection : public std::enable_shared_from_this<Connection> {
public:
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
    FrameFinding next(Frame& frame);

    void send(FrameKind kind, std::uint32_t correlation, std::string_view protocol,
              std::string_view interfaceName, std::string_view payload) {
        m_output.append(kind, correlation, protocol, interfaceName, payload);
    }
    /// Hands all frames that wait to the socket, in one call. What it does not take stays. False
    /// when the connection is broken.
    bool flush() { return m_output.flush(m_socket.get()); }
    /// Bytes that the peer has not taken yet.
    std::size_t unsent() const { return m_output.unsent(); }
    /// Ends the stream in both directions, from every thread; the loop finds the end. False when
    /// that was done before.
    bool cutOff();

    AwaitedReplies& awaited() { return m_awaited; }
    const AwaitedReplies& awaited() const { return m_awaited; }

    /// From now on nothing is read; the connection ends when all is sent.
    void finish() { m_finishing = true; }
    bool finishing() const { return m_finishing; }

    /// The channel name; empty before the peer was welcomed.
    const std::string& channel() const { return m_channel; }
    void setChannel(std::string channel) { m_channel = std::move(channel); }
    /// The peer for a log line: its channel name, before that its process.
    std::string label() const;

    /// Whether a reply of this turn is postponed. Replies come in the order of the requests, so no
    /// further request is handled until it is there.
    bool hasPostponed() const { return m_hasPostponed; }
    void setHasPostponed(bool postponed) { m_hasPostponed = postponed; }

    // Kept here for the loop: the epoll events that it is registered for, whether it is registered
    // at all, whether it is to be visited at the end of this turn, whether frames may be left in
    // its buffer, and whether it waits for its next turn at them.
    std::uint32_t interest() const { return m_interest; }
    void setInterest(std::uint32_t events) { m_interest = events; }
    bool watched() const { return m_watched; }
    void setWatched(bool watched) { m_watched = watched; }
    bool revisitPending() const { return m_revisitPending; }
    void setRevisitPending(bool pending) { m_revisitPending = pending; }
    bool hasLeft() const { return m_hasLeft; }
    void setHasLeft(bool left) { m_hasLeft = left; }
    bool isPutOff() const { return m_isPutOff; }
    void setPutOff(bool putOff) { m_isPutOff = putOff; }

private:
    void skipOversized();

    FileDescriptor m_socket;
    std::uint32_t m_maximumPayload;
    InputBuffer m_input;
    OutputQueue m_output;
    AwaitedReplies m_awaited;
    std::atomic<bool> m_isCutOff{false};
    std::uint64_t m_skipped = 0;  ///< bytes of an oversized payload that are still to come
    std::string m_channel;
    std::uint32_t m_interest = 0;
    bool m_finishing = false;
    bool m_hasPostponed = false;
    bool m_watched = false;
    bool m_revisitPending = false;
    bool m_hasLeft = false;
    bool m_isPutOff = false;
};

}  // namespace vireo
