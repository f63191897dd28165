#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "messages/Connection.h"

namespace vireo {

class PeerDirectory;
class RequestDispatcher;

/// What the frames of a peer mean: it says hello once, first, and is welcomed under a channel name;
/// then come requests and notifications. Whoever breaks a rule is told which, in a refusal, and its
/// connection ends. Used on the message thread.
class PeerProtocol {
public:
    PeerProtocol(PeerDirectory& peers, RequestDispatcher& dispatcher)
        : m_peers(peers), m_dispatcher(dispatcher) {}

    /// Handles what `Connection::next` found; `found` is not `eNothing`.
    void handle(const std::shared_ptr<Connection>& connection, FrameFinding found,
                const Frame& frame);
    /// Ends the connection with a refusal that says why, in one line.
    static void refuse(Connection& connection, std::uint32_t correlation, std::string_view reason);

private:
    void handleFrame(const std::shared_ptr<Connection>& connection, const Frame& frame);
    void welcome(const std::shared_ptr<Connection>& connection, const Frame& frame);
    void handleOversized(Connection& connection, const Frame& frame);

    PeerDirectory& m_peers;
    RequestDispatcher& m_dispatcher;
};

}  // namespace vireo
