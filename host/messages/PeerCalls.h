#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "messages/AwaitedReplies.h"

namespace vireo {

class Connection;
class MessageLoop;
class PeerDirectory;
class PeerProtocol;

/// Where a message to a peer goes.
struct PeerAddress {
    std::string_view channel;
    std::string_view protocol;
    std::string_view interfaceName;
};

/// Sends messages from the service to its peers. Safe from every thread.
///
/// Whoever waits for a reply reads the peer's stream meanwhile, unless another thread does. On the
/// message thread, what else comes from that peer is handled in between; elsewhere it is kept for
/// the message thread. Other peers wait in their sockets.
class PeerCalls {
public:
    /// Everything outlives this.
    PeerCalls(PeerDirectory& peers, PeerProtocol& protocol, MessageLoop& loop)
        : m_peers(peers), m_protocol(protocol), m_loop(loop) {}

    /// More bytes than `queued` that wait for a peer, and it is disconnected; more than one maximal
    /// frame. While more than `unsent` wait, or wait to be handled, a peer is not read from.
    void setLimits(std::size_t queued, std::size_t unsent) {
        m_maximumQueued = queued;
        m_maximumUnsent = unsent;
    }

    /// Sends a request and waits for its reply. False at once when the peer is not there, goes, or
    /// is known not to answer, and after `timeout` when it does not answer; `reply` is empty then.
    bool call(const PeerAddress& to, std::string_view payload, std::chrono::milliseconds timeout,
              std::string& reply);
    /// Sends a notification without waiting. False when the peer is not there or does not take
    /// what it is sent.
    bool notify(const PeerAddress& to, std::string_view payload);

    using ConnectionPointer = std::shared_ptr<Connection>;
    /// Handles the frames that other threads came across, at most `budget`, which becomes less by
    /// each. False when it is used up and there may be more. Message thread only.
    bool serveDeferred(const ConnectionPointer& connection, std::size_t& budget);

private:
    using Deadline = AwaitedReplies::Clock::time_point;

    void serveDeferred(const ConnectionPointer& connection);
    ConnectionPointer reach(const PeerAddress& to, std::string_view payload);
    void await(const ConnectionPointer& connection, const AwaitedReplies::Call& call,
               Deadline deadline);
    void readOnce(const ConnectionPointer& connection, const AwaitedReplies::Call& call,
                  Deadline deadline, bool isMessageThread);
    void serveBuffered(const ConnectionPointer& connection, const AwaitedReplies::Call& call,
                       bool isMessageThread);
    bool isFull(const Connection& connection) const;
    void receive(Connection& connection, Deadline deadline);
    void handle(const ConnectionPointer& connection, FrameFinding found, const Frame& frame,
                bool isMessageThread);
    PeerDirectory& m_peers;
    PeerProtocol& m_protocol;
    MessageLoop& m_loop;
    std::size_t m_maximumQueued = 16U << 20U;
    std::size_t m_maximumUnsent = 1U << 20U;
};

}  // namespace vireo
