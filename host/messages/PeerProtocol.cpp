#include "messages/PeerProtocol.h"

#include <string>

#include "log/Log.h"
#include "messages/PeerDirectory.h"
#include "messages/RequestDispatcher.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "PeerProtocol";
constexpr const char* kFile = "./host/messages/PeerProtocol";

}  // namespace

void PeerProtocol::refuse(Connection& connection, std::uint32_t correlation,
                          std::string_view reason) {
    if (loggingOnUni(kLogWarning)) {
        logAppUni(kComponent, kFile, kLogWarning, __LINE__, "refused %s: %.*s",
                  connection.label().c_str(), static_cast<int>(reason.size()), reason.data());
    }
    connection.send(FrameKind::eRefusal, correlation, {}, {}, reason);
    connection.finish();
}

void PeerProtocol::handle(const std::shared_ptr<Connection>& connection, FrameFinding found,
                          const Frame& frame) {
    connection->awaited().heard();
    switch (found) {
        case FrameFinding::eNothing:
            break;
        case FrameFinding::eFrame:
            handleFrame(connection, frame);
            break;
        case FrameFinding::eOversized:
            handleOversized(*connection, frame);
            break;
        case FrameFinding::eNotOurs:
            refuse(*connection, 0, "these bytes are no frame");
            break;
        case FrameFinding::eWrongVersion:
            refuse(*connection, 0, "this version of the protocol is not served, version 1 is");
            break;
        case FrameFinding::eUnknownKind:
            refuse(*connection, 0, "unknown kind of frame");
            break;
    }
}

void PeerProtocol::handleFrame(const std::shared_ptr<Connection>& connection, const Frame& frame) {
    const bool welcomed = !connection->channel().empty();
    switch (frame.header.kind) {
        case FrameKind::eHello:
            if (welcomed) {
                refuse(*connection, frame.header.correlation, "a second hello");
            } else {
                welcome(connection, frame);
            }
            return;
        case FrameKind::eRequest:
        case FrameKind::eNotification:
            if (welcomed) {
                m_dispatcher.dispatch(*connection, frame);
                return;
            }
            break;
        case FrameKind::eReply:
            if (welcomed) {
                if (!connection->awaited().complete(frame.header.correlation, frame.payload) &&
                    loggingOnUni(kLogDebug)) {
                    logAppUni(kComponent, kFile, kLogDebug, __LINE__,
                              "dropped reply %u of %s, which nobody waits for",
                              frame.header.correlation, connection->label().c_str());
                }
                return;
            }
            break;
        case FrameKind::eWelcome:
        case FrameKind::eRefusal:
            if (welcomed) {
                refuse(*connection, frame.header.correlation,
                       "welcomes and refusals come from the service alone");
                return;
            }
            break;
    }
    refuse(*connection, frame.header.correlation, "the first frame must be a hello");
}

void PeerProtocol::welcome(const std::shared_ptr<Connection>& connection, const Frame& frame) {
    std::string error;
    // The welcome comes before anything that other threads may have to tell the peer.
    std::string channel =
        m_peers.claim(frame.payload, connection, error, [&](const std::string& name) {
            connection->send(FrameKind::eWelcome, frame.header.correlation, {}, {}, name);
        });
    if (channel.empty()) {
        refuse(*connection, frame.header.correlation, error);
        return;
    }
    connection->setChannel(std::move(channel));
    if (loggingOnUni(kLogDebug)) {
        logAppUni(kComponent, kFile, kLogDebug, __LINE__, "welcomed %s",
                  connection->label().c_str());
    }
}

void PeerProtocol::handleOversized(Connection& connection, const Frame& frame) {
    if (connection.channel().empty()) {
        refuse(connection, frame.header.correlation,
               frame.header.kind == FrameKind::eHello ? "the hello is too long"
                                                      : "the first frame must be a hello");
        return;
    }
    if (loggingOnUni(kLogWarning)) {
        logAppUni(kComponent, kFile, kLogWarning, __LINE__,
                  "threw away a frame of %s: %u bytes, and %u are the most",
                  connection.label().c_str(), frame.header.payloadLength,
                  connection.maximumPayload());
    }
    if (frame.header.kind == FrameKind::eRequest) {
        RequestDispatcher::answerEmpty(connection, frame);
    } else if (frame.header.kind == FrameKind::eReply) {
        connection.awaited().complete(frame.header.correlation, {});
    } else if (frame.header.kind == FrameKind::eHello) {
        refuse(connection, frame.header.correlation, "a second hello");
    }
}

}  // namespace vireo
