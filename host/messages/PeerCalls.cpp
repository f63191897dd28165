#include "messages/PeerCalls.h"

#include <poll.h>

#include <algorithm>
#include <limits>

#include "log/Log.h"
#include "messages/Connection.h"
#include "messages/MessageLoop.h"
#include "messages/PeerDirectory.h"
#include "messages/PeerProtocol.h"

namespace vireo {
namespace {

using std::chrono::milliseconds;

constexpr const char* kComponent = "PeerCalls";
constexpr const char* kFile = "./host/messages/PeerCalls";

// Notifications are written before the turn of the message loop ends once this much has gathered.
constexpr std::size_t kEarlyFlush = 256U << 10U;
// How soon a waiting message thread notices that the process is to stop.
constexpr milliseconds kLongestPoll{100};
// How soon a thread looks again whether the message thread has handled what waits for it.
constexpr milliseconds kPauseWhenFull{10};

void logLine(int level, int line, const char* what, std::string_view channel) {
    if (loggingOnUni(level)) {
        logAppUni(kComponent, kFile, level, line, "peer \"%.*s\" %s",
                  static_cast<int>(channel.size()), channel.data(), what);
    }
}

}  // namespace

std::shared_ptr<Connection> PeerCalls::reach(const PeerAddress& to, std::string_view payload) {
    ConnectionPointer connection = m_peers.find(to.channel);
    if (!connection) {
        return nullptr;
    }
    if (payload.size() > FrameCodec::kMaximumPayload) {
        logLine(kLogError, __LINE__, "is not sent what is longer than a frame", to.channel);
        return nullptr;
    }
    if (connection->unsent() + payload.size() > m_maximumQueued) {
        if (connection->cutOff()) {
            logLine(kLogError, __LINE__,
                    "does not take what it is sent: too much waits for it, it is disconnected",
                    to.channel);
            m_loop.revisit(connection);
        }
        return nullptr;
    }
    return connection;
}

bool PeerCalls::notify(const PeerAddress& to, std::string_view payload) {
    const ConnectionPointer connection = reach(to, payload);
    if (!connection) {
        return false;
    }
    connection->send(FrameKind::eNotification, 0, to.protocol, to.interfaceName, payload);
    const bool isMessageThread = m_loop.isMessageThread();
    if (!isMessageThread || connection->unsent() >= kEarlyFlush) {
        connection->flush();
    }
    if (isMessageThread || connection->unsent() > 0) {
        m_loop.revisit(connection);
    }
    return true;
}

bool PeerCalls::call(const PeerAddress& to, std::string_view payload, milliseconds timeout,
                     std::string& reply) {
    reply.clear();
    const ConnectionPointer connection = reach(to, payload);
    AwaitedReplies::Call call;
    if (!connection) {
        logLine(kLogWarning, __LINE__, "is asked, but it is not there", to.channel);
        return false;
    }
    if (!connection->awaited().begin(call)) {
        logLine(kLogWarning, __LINE__, "is not asked: it left an earlier question unanswered",
                to.channel);
        return false;
    }
    connection->send(FrameKind::eRequest, call.id, to.protocol, to.interfaceName, payload);
    connection->flush();  // another thread may be the one that reads and writes
    await(connection, call, AwaitedReplies::Clock::now() + timeout);
    connection->awaited().end(call);
    // Frames that came behind the reply are still in the buffer.
    m_loop.revisit(connection);
    if (!call.isAnswered) {
        logLine(kLogWarning, __LINE__, "did not answer", to.channel);
    }
    reply = std::move(call.reply);
    return call.isAnswered;
}

void PeerCalls::await(const ConnectionPointer& connection, const AwaitedReplies::Call& call,
                      Deadline deadline) {
    AwaitedReplies& awaited = connection->awaited();
    const bool isMessageThread = m_loop.isMessageThread();
    if (isMessageThread) {
        m_loop.endTurn();
    }
    // What has come by the deadline counts, also when something else kept this thread until then.
    bool isLastLook = false;
    while (!awaited.isOver(call) && !isLastLook) {
        isLastLook =
            AwaitedReplies::Clock::now() >= deadline || (isMessageThread && m_loop.stopping());
        if (isMessageThread) {
            m_loop.flushRevisits();  // what others are to hear does not wait for this peer
        }
        if (awaited.tryRead()) {
            readOnce(connection, call, deadline, isMessageThread);
            awaited.stopReading();
            continue;
        }
        awaited.waitForReader(call, deadline, isMessageThread);
        if (isMessageThread) {
            serveDeferred(connection);
        }
    }
}

void PeerCalls::readOnce(const ConnectionPointer& connection, const AwaitedReplies::Call& call,
                         Deadline deadline, bool isMessageThread) {
    if (isMessageThread) {
        serveDeferred(connection);
    }
    serveBuffered(connection, call, isMessageThread);
    if (!connection->awaited().isOver(call)) {
        receive(*connection, deadline);
        serveBuffered(connection, call, isMessageThread);
    }
}

void PeerCalls::serveBuffered(const ConnectionPointer& connection, const AwaitedReplies::Call& call,
                              bool isMessageThread) {
    AwaitedReplies& awaited = connection->awaited();
    Frame frame;
    while (!awaited.isOver(call) && !isFull(*connection)) {
        const FrameFinding found = connection->next(frame);
        if (found == FrameFinding::eNothing) {
            return;
        }
        handle(connection, found, frame, isMessageThread);
        if (found != FrameFinding::eFrame && found != FrameFinding::eOversized) {
            awaited.markEnded();  // nothing behind these bytes can be read
        }
    }
}

bool PeerCalls::isFull(const Connection& connection) const {
    return connection.unsent() > m_maximumUnsent ||
           connection.awaited().deferredBytes() > m_maximumUnsent;
}

void PeerCalls::receive(Connection& connection, Deadline deadline) {
    const bool isWritable = connection.flush();
    const auto left = std::chrono::ceil<milliseconds>(deadline - AwaitedReplies::Clock::now());
    const int wanted = (isFull(connection) ? 0 : POLLIN) | (connection.unsent() > 0 ? POLLOUT : 0);
    pollfd waited{connection.descriptor(), static_cast<short>(wanted), 0};
    const auto longest = wanted == 0 ? kPauseWhenFull : kLongestPoll;
    ::poll(&waited, 1, static_cast<int>(std::clamp(left, milliseconds(0), longest).count()));
    const bool isReadable = (waited.revents & ~POLLOUT) != 0 && !isFull(connection);
    const auto received = isReadable ? connection.receive() : Connection::Received::eNothing;
    // What was sent before the end still counts.
    if (received == Connection::Received::eEnd ||
        (!isWritable && received == Connection::Received::eNothing)) {
        connection.awaited().markEnded();
    }
}

void PeerCalls::handle(const ConnectionPointer& connection, FrameFinding found, const Frame& frame,
                       bool isMessageThread) {
    if (isMessageThread) {
        m_protocol.handle(connection, found, frame);
        if (connection->hasPostponed()) {
            m_loop.endTurn();  // what comes behind it may be the reply that is waited for
        }
        if (connection->finishing()) {
            connection->awaited().markEnded();
        }
        return;
    }
    AwaitedReplies& awaited = connection->awaited();
    awaited.heard();
    if (found != FrameFinding::eFrame || frame.header.kind != FrameKind::eReply) {
        awaited.defer(found, frame);
        m_loop.revisit(connection);
    } else {
        awaited.complete(frame.header.correlation, frame.payload);
    }
}

bool PeerCalls::serveDeferred(const ConnectionPointer& connection, std::size_t& budget) {
    if (connection->hasPostponed() && connection->awaited().deferredBytes() > 0) {
        m_loop.endTurn();  // replies come in the order of the requests
    }
    OwnedFrame owned;
    while (budget > 0 && connection->awaited().takeDeferred(owned)) {
        --budget;
        handle(connection, owned.finding(), owned.frame(), true);
    }
    return budget > 0;
}

// All of them: whoever waits for this peer must not wait for a turn.
void PeerCalls::serveDeferred(const ConnectionPointer& connection) {
    std::size_t all = std::numeric_limits<std::size_t>::max();
    serveDeferred(connection, all);
}

}  // namespace vireo
