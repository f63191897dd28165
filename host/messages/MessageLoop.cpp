#include "messages/MessageLoop.h"

#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <span>
#include <system_error>
#include <utility>

#include "log/Log.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "MessageLoop";
constexpr const char* kFile = "./host/messages/MessageLoop";

constexpr std::size_t kEventsAtOnce = 64;
// Replies are written before the turn ends once this much has gathered.
constexpr std::size_t kEarlyFlush = 256U << 10U;

}  // namespace

MessageLoop::MessageLoop()
    : m_epoll(::epoll_create1(EPOLL_CLOEXEC)),
      m_wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_admission(m_epoll, [this](FileDescriptor socket) { admit(std::move(socket)); }),
      m_events(kEventsAtOnce),
      m_protocol(m_peers, m_dispatcher),
      m_calls(m_peers, m_protocol, *this) {}

MessageLoop::~MessageLoop() = default;

bool MessageLoop::watch(int descriptor) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = descriptor;
    return ::epoll_ctl(m_epoll.get(), EPOLL_CTL_ADD, descriptor, &event) == 0;
}

bool MessageLoop::attend(int descriptor, std::function<void()> whenReadable) {
    m_attended[descriptor] = std::move(whenReadable);
    return watch(descriptor);
}

bool MessageLoop::listen(const std::string& socketPath, const MessageLimits& limits,
                         std::string& error) {
    if (!m_epoll || !m_wakeUp || !watch(m_wakeUp.get())) {
        error = "cannot wait for messages: " + std::generic_category().message(errno);
        return false;
    }
    m_limits = limits;
    // Replies that a peer has not taken yet are no reason to disconnect it.
    m_calls.setLimits(std::max(limits.maximumQueued,
                               limits.maximumUnsent + 2 * std::size_t{FrameCodec::kMaximumPayload}),
                      limits.maximumUnsent);
    return m_admission.open(socketPath, limits.backlog, error);
}

void MessageLoop::wake() noexcept {
    const int before = errno;
    const std::uint64_t one = 1;
    // The only failure is a counter that is full, and a full counter wakes as well.
    [[maybe_unused]] const ssize_t ignored = ::write(m_wakeUp.get(), &one, sizeof one);
    errno = before;
}

void MessageLoop::clearWake() noexcept {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t ignored = ::read(m_wakeUp.get(), &count, sizeof count);
}

void MessageLoop::stop() noexcept {
    m_stopRequested.store(true, std::memory_order_relaxed);
    wake();
}

void MessageLoop::postTask(std::function<void()> task) {
    if (m_tasks.post(std::move(task))) {
        wake();
    }
}

bool MessageLoop::run() {
    m_thread = std::this_thread::get_id();
    bool going = m_admission.isOpen();
    while (going && !stopping()) {
        going = waitAndServe();
    }
    m_tasks.runPosted();
    endTurn();
    flushRevisits();
    while (!m_connections.empty()) {
        close(m_connections.begin()->second);
    }
    return going;
}

bool MessageLoop::waitAndServe() {
    const int longest = m_admission.isPaused() ? m_limits.acceptPauseMs : -1;
    const int count = ::epoll_wait(m_epoll.get(), m_events.data(), static_cast<int>(kEventsAtOnce),
                                   m_putOff.empty() && !m_dispatcher.hasPostponed() ? longest : 0);
    if (count < 0 && errno != EINTR) {
        if (loggingOnUni(kLogError)) {
            logAppUni(kComponent, kFile, kLogError, __LINE__, "cannot wait for messages: %s",
                      std::generic_category().message(errno).c_str());
        }
        return false;
    }
    if (m_admission.isPaused()) {
        m_admission.resume();
    }
    for (const epoll_event& event :
         std::span(m_events).first(static_cast<std::size_t>(count < 0 ? 0 : count))) {
        serveEvent(event);
        m_tasks.runPosted();
        runRevisits();
    }
    runPutOff();
    endTurn();
    runRevisits();
    return true;
}

void MessageLoop::endTurn() {
    for (const ConnectionPointer& connection : m_dispatcher.endTurn()) {
        revisit(connection);
    }
}

void MessageLoop::serveEvent(const epoll_event& event) {
    const int descriptor = event.data.fd;
    if (descriptor == m_wakeUp.get()) {
        clearWake();
    } else if (descriptor == m_admission.descriptor()) {
        m_admission.acceptSome();
    } else if (const auto found = m_connections.find(descriptor); found != m_connections.end()) {
        if (!found->second->isPutOff()) {
            turn(ConnectionPointer(found->second), event.events);
        }
    } else if (const auto attended = m_attended.find(descriptor); attended != m_attended.end()) {
        attended->second();
    }
}

void MessageLoop::revisit(const ConnectionPointer& connection) {
    if (!isMessageThread()) {
        postTask([this, connection] { revisit(connection); });
    } else if (!connection->revisitPending()) {
        connection->setRevisitPending(true);
        m_revisits.push_back(connection);
    }
}

void MessageLoop::flushRevisits() {
    for (const ConnectionPointer& connection : m_revisits) {
        connection->flush();
    }
}

void MessageLoop::runRevisits() {
    // What these turns bring up is seen to as well.
    std::size_t next = 0;
    while (next < m_revisits.size()) {
        const ConnectionPointer connection = m_revisits[next++];
        connection->setRevisitPending(false);
        turnIfHere(connection);
    }
    m_revisits.clear();
}

void MessageLoop::runPutOff() {
    for (const ConnectionPointer& connection : std::exchange(m_putOff, {})) {
        connection->setPutOff(false);
        turnIfHere(connection);
        m_tasks.runPosted();
        runRevisits();
    }
}

void MessageLoop::turnIfHere(const ConnectionPointer& connection) {
    const auto found = m_connections.find(connection->descriptor());
    if (found != m_connections.end() && found->second == connection) {
        turn(connection, 0);
    }
}

void MessageLoop::admit(FileDescriptor socket) {
    const int descriptor = socket.get();
    auto connection = std::make_shared<Connection>(std::move(socket), m_limits.maximumRequest);
    if (m_connections.size() >= m_limits.maximumPeers) {
        PeerProtocol::refuse(*connection, 0,
                             "there are " + std::to_string(m_limits.maximumPeers) +
                                 " peers already, the most that are served");
        connection->flush();
        return;
    }
    if (!watch(descriptor)) {
        PeerProtocol::refuse(*connection, 0, std::generic_category().message(errno));
        connection->flush();
        return;
    }
    connection->setInterest(EPOLLIN);
    connection->setWatched(true);
    m_connections.emplace(descriptor, std::move(connection));
}

bool MessageLoop::readable(const Connection& connection) const {
    return !connection.finishing() && !connection.hasPostponed() &&
           connection.unsent() <= m_limits.maximumUnsent && !stopping();
}

void MessageLoop::turn(const ConnectionPointer& connection, std::uint32_t events) {
    std::size_t budget = m_limits.framesInTurn;
    if (!connection->awaited().tryRead()) {
        // Whoever reads it asks for a visit for each frame that it comes across, and at the end.
        unwatch(*connection);
        if (!m_calls.serveDeferred(connection, budget)) {
            putOff(connection);
        }
        connection->flush();
        return;
    }
    bool alive = connection->flush() && serveReceived(connection, budget);
    if (alive && (events & ~EPOLLOUT) != 0 && readable(*connection) && !connection->hasLeft()) {
        alive = receiveAndServe(connection, budget);
    }
    connection->awaited().stopReading();
    const bool isDone =
        connection->finishing() && connection->unsent() == 0 && !connection->hasPostponed();
    if (!alive || isDone) {
        close(connection);
    } else {
        waitFor(connection);
    }
}

// Other threads write too, so what is unsent is looked at once: either it brings an event, or the
// frames that it held up have their turn.
void MessageLoop::waitFor(const ConnectionPointer& connection) {
    const std::size_t unsent = connection->unsent();
    updateInterest(*connection, unsent);
    // A postponed reply brings the loop back when it is there.
    if (connection->hasLeft() && unsent <= m_limits.maximumUnsent && !connection->hasPostponed()) {
        putOff(connection);
    }
}

void MessageLoop::putOff(const ConnectionPointer& connection) {
    if (!connection->isPutOff()) {
        connection->setPutOff(true);
        m_putOff.push_back(connection);
    }
}

bool MessageLoop::receiveAndServe(const ConnectionPointer& connection, std::size_t& budget) {
    switch (connection->receive()) {
        case Connection::Received::eBytes:
            return serveReceived(connection, budget);
        case Connection::Received::eNothing:
            return true;
        case Connection::Received::eEnd:
            break;
    }
    // The peer may have closed its sending side alone: it still gets what it asked for.
    release(*connection);
    connection->finish();
    return connection->flush();
}

bool MessageLoop::serveReceived(const ConnectionPointer& connection, std::size_t& budget) {
    bool mayGoOn = m_calls.serveDeferred(connection, budget);  // those came before
    Frame frame;
    for (; mayGoOn && readable(*connection); mayGoOn = budget > 0) {
        const FrameFinding found = connection->next(frame);
        if (found == FrameFinding::eNothing) {
            connection->setHasLeft(false);
            return connection->flush();
        }
        --budget;
        m_protocol.handle(connection, found, frame);
        if (connection->unsent() >= kEarlyFlush && !connection->flush()) {
            return false;
        }
    }
    // Over the limit nothing is flushed: the event that the socket takes more is what brings the
    // loop back to the frames that are left.
    connection->setHasLeft(!connection->finishing());
    return connection->unsent() > m_limits.maximumUnsent || connection->flush();
}

void MessageLoop::updateInterest(Connection& connection, std::size_t unsent) {
    const std::uint32_t wanted =
        (connection.finishing() || unsent > m_limits.maximumUnsent ? 0U : EPOLLIN) |
        (unsent > 0 ? EPOLLOUT : 0U);
    if (connection.watched() && wanted == connection.interest()) {
        return;
    }
    epoll_event event{};
    event.events = wanted;
    event.data.fd = connection.descriptor();
    ::epoll_ctl(m_epoll.get(), connection.watched() ? EPOLL_CTL_MOD : EPOLL_CTL_ADD,
                connection.descriptor(), &event);
    connection.setInterest(wanted);
    connection.setWatched(true);
}

void MessageLoop::unwatch(Connection& connection) {
    if (connection.watched()) {
        ::epoll_ctl(m_epoll.get(), EPOLL_CTL_DEL, connection.descriptor(), nullptr);
        connection.setWatched(false);
    }
}

void MessageLoop::release(const Connection& connection) {
    if (m_peers.release(connection.channel(), connection) && m_whenGone) {
        m_whenGone(connection.channel());
    }
}

void MessageLoop::close(const ConnectionPointer& connection) {
    if (loggingOnUni(kLogDebug)) {
        logAppUni(kComponent, kFile, kLogDebug, __LINE__, "%s has left",
                  connection->label().c_str());
    }
    release(*connection);
    connection->awaited().markEnded();
    unwatch(*connection);
    m_connections.erase(connection->descriptor());
}

}  // namespace vireo
