#include "ClientSession.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <system_error>
#include <utility>

#include "LocalMgmtCallbackIfc.h"
#include "MgmtAgentIfc.h"
#include "PeerConnection.h"
#include "messages/AgentText.h"
#include "messages/CallbackText.h"
#include "service/ProtocolAdapter.h"

namespace vireo {
namespace {

using std::chrono::milliseconds;
using Clock = PeerConnection::Clock;

constexpr int kForEver = -1;
// Keeps deadlines within what a clock can count.
constexpr milliseconds kLongestTimeout = std::chrono::hours(24 * 365);

// What is for nobody gets an empty reply.
PeerConnection::Server serverFor(MgmtAgentIfc* agent, LocalMgmtCallbackIfc* callback) {
    return [agent, callback](std::string_view protocol, std::string_view interfaceName,
                             std::string_view payload) {
        std::string reply;
        const bool isText = protocol == VireoProtocols::TEXT;
        if (isText && agent != nullptr && interfaceName == AgentText::kInterface) {
            AgentText::serve(*agent, payload, reply);
        } else if (isText && callback != nullptr && interfaceName == CallbackText::kInterface) {
            CallbackText::serve(*callback, payload, reply);
        }
        return reply.size() <= FrameCodec::kMaximumPayload ? reply : std::string();
    };
}

}  // namespace

std::unique_ptr<ClientSession> ClientSession::open(const Settings& settings, std::string& error) {
    FileDescriptor stop(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!stop) {
        error = "cannot reach the service at '" + settings.socketPath +
                "': the system gives no descriptor to wait on";
        return nullptr;
    }
    Settings limited = settings;
    limited.timeout = std::min(settings.timeout, kLongestTimeout);
    std::unique_ptr<PeerConnection> connection =
        PeerConnection::open(limited.socketPath, limited.channelName, limited.timeout,
                             serverFor(limited.agent, limited.callback), error);
    if (!connection) {
        return nullptr;
    }
    return std::unique_ptr<ClientSession>(
        new ClientSession(std::move(connection), limited, std::move(stop)));
}

ClientSession::ClientSession(std::unique_ptr<PeerConnection> connection, const Settings& settings,
                             FileDescriptor stop)
    : m_connection(std::move(connection)),
      m_hasAgent(settings.agent != nullptr),
      m_hasCallback(settings.callback != nullptr),
      m_timeout(settings.timeout),
      m_stop(std::move(stop)) {}

ClientSession::~ClientSession() {
    stopServing();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

const std::string& ClientSession::channelName() const {
    return m_connection->channelName();
}

std::string ClientSession::closeReason() const {
    const CallTurn::Guard turn(m_turn);
    return m_connection->closeReason();
}

void ClientSession::setTimeout(milliseconds timeout) {
    m_timeout = std::min(timeout, kLongestTimeout);
}

int ClientSession::readyDescriptor() const {
    return m_connection->readyDescriptor();
}

CallStatus ClientSession::call(std::string_view protocol, std::string_view interfaceName,
                               std::string_view payload, std::string& reply) {
    const CallTurn::Guard turn(m_turn);
    return m_connection->exchange(protocol, interfaceName, payload, Clock::now() + m_timeout.load(),
                                  reply);
}

CallStatus ClientSession::serveReady(bool& served) {
    const CallTurn::Guard turn(m_turn);
    return m_connection->serveReady(served);
}

CallStatus ClientSession::serve(milliseconds timeout) {
    if (m_turn.isMine()) {
        return CallStatus::eTimedOut;  // a message is being served already
    }
    const Clock::time_point deadline =
        Clock::now() + std::clamp(timeout, milliseconds::zero(), kLongestTimeout);
    for (;;) {
        bool served = false;
        const CallStatus status = serveReady(served);
        if (served || status != CallStatus::eDone) {
            return status;
        }
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) {
            return CallStatus::eTimedOut;
        }
        // Without the turn, so that others can make calls meanwhile.
        pollfd waited{readyDescriptor(), POLLIN, 0};
        ::poll(&waited, 1, left > INT32_MAX ? INT32_MAX : static_cast<int>(left));
    }
}

CallStatus ClientSession::serveUntilStopped() {
    if (m_turn.isMine()) {
        return CallStatus::eTimedOut;
    }
    for (;;) {
        pollfd waited[] = {{readyDescriptor(), POLLIN, 0}, {m_stop.get(), POLLIN, 0}};
        ::poll(waited, 2, kForEver);
        if (waited[1].revents != 0) {
            return CallStatus::eDone;
        }
        bool served = false;
        if (const CallStatus status = serveReady(served); status != CallStatus::eDone) {
            return status;
        }
    }
}

bool ClientSession::startServing() {
    const std::lock_guard lock(m_startMutex);
    if (m_thread.joinable()) {
        return true;
    }
    try {
        m_thread = std::thread([this] { serveUntilStopped(); });
    } catch (const std::system_error&) {
        return false;
    }
    return true;
}

void ClientSession::stopServing() noexcept {
    const std::uint64_t one = 1;
    // Also from a signal handler, so nothing but this. It cannot fail but when it is set already.
    [[maybe_unused]] const ssize_t written = ::write(m_stop.get(), &one, sizeof one);
}

}  // namespace vireo
