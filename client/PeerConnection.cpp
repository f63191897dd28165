#include "PeerConnection.h"

#include <algorithm>
#include <utility>

namespace vireo {
namespace {

using std::chrono::milliseconds;

// A service and an agent that call each other for ever must not use up the stack.
constexpr unsigned kDeepest = 16;
constexpr std::size_t kMostPostponed = 64U << 20U;

}  // namespace

/// Stands in the list of waits while it lives, so that its reply is known when it comes.
class PeerConnection::OpenWait {
public:
    OpenWait(std::vector<Wait*>& waits, Wait& wait) : m_waits(waits) { m_waits.push_back(&wait); }
    ~OpenWait() { m_waits.pop_back(); }
    OpenWait(const OpenWait&) = delete;
    OpenWait& operator=(const OpenWait&) = delete;

private:
    std::vector<Wait*>& m_waits;
};

/// Counts a message as being served while it lives, also when serving it ends by an exception.
class PeerConnection::Depth {
public:
    explicit Depth(unsigned& count) : m_count(count) { ++m_count; }
    ~Depth() { --m_count; }
    Depth(const Depth&) = delete;
    Depth& operator=(const Depth&) = delete;

private:
    unsigned& m_count;
};

PeerConnection::PeerConnection(FileDescriptor socket, Server server)
    : m_stream(std::move(socket)), m_ready(m_stream.socket()), m_server(std::move(server)) {}

std::unique_ptr<PeerConnection> PeerConnection::open(const std::string& socketPath,
                                                     const std::string& channelName,
                                                     milliseconds timeout, Server server,
                                                     std::string& error) {
    const Clock::time_point deadline = Clock::now() + timeout;
    const std::string where = "cannot reach the service at '" + socketPath + "': ";
    std::string cause;
    FileDescriptor socket = FrameStream::connect(socketPath, timeout, cause);
    if (!socket) {
        error = where + cause;
        return nullptr;
    }
    std::unique_ptr<PeerConnection> connection(
        new PeerConnection(std::move(socket), std::move(server)));
    if (!connection->m_ready.isUsable()) {
        error = where + "the system gives no descriptor to wait on";
        return nullptr;
    }
    if (!connection->greet(channelName, deadline, cause)) {
        error =
            where + (cause.empty() ? "no welcome within " + std::to_string(timeout.count()) + " ms"
                                   : cause);
        return nullptr;
    }
    connection->updateReadiness();
    return connection;
}

bool PeerConnection::greet(const std::string& channelName, Clock::time_point deadline,
                           std::string& cause) {
    m_stream.append(FrameKind::eHello, 0, {}, {}, channelName);
    for (;;) {
        const std::optional<FrameStream::Frame> frame = m_stream.takeFrame();
        if (frame && frame->header.kind == FrameKind::eWelcome) {
            m_channelName = frame->payload;
            return true;
        }
        if (frame && frame->header.kind == FrameKind::eRefusal) {
            cause = "refused: " + std::string(frame->payload);
            return false;
        }
        if (frame) {
            cause = "it answers a greeting with something else";
            return false;
        }
        m_stream.sendPending();
        if (m_stream.await(deadline) != CallStatus::eDone) {
            cause = m_stream.closeReason();
            return false;
        }
    }
}

CallStatus PeerConnection::exchange(std::string_view protocol, std::string_view interfaceName,
                                    std::string_view payload, Clock::time_point deadline,
                                    std::string& reply) {
    // The rest of a request that timed out half sent has to leave first; a frame cannot be cut.
    CallStatus status = flush(deadline);
    if (status == CallStatus::eDone) {
        Wait wait;
        status = converse(wait, protocol, interfaceName, payload, deadline);
        if (status == CallStatus::eDone) {
            reply = std::move(wait.reply);
        }
    }
    updateReadiness();
    return status;
}

CallStatus PeerConnection::converse(Wait& wait, std::string_view protocol,
                                    std::string_view interfaceName, std::string_view payload,
                                    Clock::time_point deadline) {
    wait.correlation = ++m_lastCorrelation;
    const OpenWait open(m_waits, wait);
    m_stream.append(FrameKind::eRequest, wait.correlation, protocol, interfaceName, payload);
    m_stream.sendPending();
    for (;;) {
        while (!wait.isOver && step()) {
        }
        if (wait.isOver) {
            return CallStatus::eDone;
        }
        if (const CallStatus status = m_stream.await(deadline); status != CallStatus::eDone) {
            return status;
        }
        m_stream.sendPending();
    }
}

CallStatus PeerConnection::flush(Clock::time_point deadline) {
    m_stream.sendPending();
    while (!m_stream.isOpen() || m_stream.hasUnsent()) {
        if (const CallStatus status = m_stream.await(deadline); status != CallStatus::eDone) {
            return status;
        }
        while (step()) {
        }
        m_stream.sendPending();
    }
    return CallStatus::eDone;
}

CallStatus PeerConnection::serveReady(bool& served) {
    served = false;
    m_stream.sendPending();
    const auto serveAll = [&] {
        while (step()) {
            served = true;
        }
    };
    serveAll();
    if (m_stream.isOpen()) {
        m_stream.receive();
        serveAll();
    }
    updateReadiness();
    return m_stream.isOpen() || served ? CallStatus::eDone : CallStatus::eDisconnected;
}

// Deals with one thing that is here. False when there is nothing.
bool PeerConnection::step() {
    if (m_serving == 0 && !m_postponed.empty()) {
        const Notification next = std::move(m_postponed.front());
        m_postponed.pop_front();
        m_postponedBytes -= next.size();
        serve(next.protocol, next.interfaceName, next.payload);
        return true;
    }
    const std::optional<FrameStream::Frame> frame = m_stream.takeFrame();
    if (frame) {
        handle(*frame);
    }
    return frame.has_value();
}

void PeerConnection::handle(const FrameStream::Frame& frame) {
    switch (frame.header.kind) {
        case FrameKind::eReply:
            takeReply(frame);
            break;
        case FrameKind::eRequest:
            answer(frame);
            break;
        case FrameKind::eNotification:
            takeNotification(frame);
            break;
        case FrameKind::eRefusal:
            m_stream.close("the service ended the connection: " + std::string(frame.payload));
            break;
        case FrameKind::eHello:
        case FrameKind::eWelcome:
            break;
    }
}

// The reply may be that of an outer call, whose wait goes on when this one is over. Nobody waits
// any more for the reply of a call that timed out.
void PeerConnection::takeReply(const FrameStream::Frame& frame) {
    const auto wait = std::find_if(m_waits.begin(), m_waits.end(), [&frame](const Wait* open) {
        return open->correlation == frame.header.correlation;
    });
    if (wait != m_waits.end() && !(*wait)->isOver) {
        (*wait)->reply = frame.payload;
        (*wait)->isOver = true;
    }
}

void PeerConnection::answer(const FrameStream::Frame& frame) {
    const std::string protocol(frame.protocol);
    const std::string interfaceName(frame.interfaceName);
    const std::uint32_t correlation = frame.header.correlation;
    // Whoever asks too deep gets an empty answer at once instead of waiting for its deadline.
    const std::string reply = m_serving < kDeepest
                                  ? serve(protocol, interfaceName, std::string(frame.payload))
                                  : std::string();
    m_stream.append(FrameKind::eReply, correlation, protocol, interfaceName, reply);
    m_stream.sendPending();
}

// Notifications are served one after the other, never one within another: an observer that makes a
// call for each would sink deeper with each.
void PeerConnection::takeNotification(const FrameStream::Frame& frame) {
    if (m_serving == 0) {
        serve(std::string(frame.protocol), std::string(frame.interfaceName),
              std::string(frame.payload));
        return;
    }
    m_postponed.push_back({std::string(frame.protocol), std::string(frame.interfaceName),
                           std::string(frame.payload)});
    m_postponedBytes += m_postponed.back().size();
    if (m_postponedBytes > kMostPostponed) {
        m_stream.close("too many notifications came while another message was served");
    }
}

std::string PeerConnection::serve(std::string_view protocol, std::string_view interfaceName,
                                  std::string_view payload) {
    const Depth depth(m_serving);
    return m_server(protocol, interfaceName, payload);
}

void PeerConnection::updateReadiness() {
    const bool hasWork =
        !m_stream.isOpen() || m_stream.hasFrame() || (m_serving == 0 && !m_postponed.empty());
    m_ready.update(m_stream.socket(), m_stream.hasUnsent(), hasWork);
}

}  // namespace vireo
