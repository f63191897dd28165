#pragma once

#include <sys/epoll.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

#include "messages/Connection.h"
#include "messages/FileDescriptor.h"
#include "messages/MessageLimits.h"
#include "messages/PeerAdmission.h"
#include "messages/PeerCalls.h"
#include "messages/PeerDirectory.h"
#include "messages/PeerProtocol.h"
#include "messages/RequestDispatcher.h"
#include "messages/TaskQueue.h"

namespace vireo {

/// Serves the peers of the service, all on the one thread that calls `run`: the message thread.
///
/// Each turn of a connection reads once, handles the whole frames that are there, up to a number,
/// and writes all replies at once; what is left waits until the others have had a turn. Replies
/// come in the order of the requests. A peer that does not take its
/// replies is not read from until it does, so that neither it nor the service runs out of memory;
/// the others do not notice. Replies that an invoker postponed are given when every connection that
/// had something to say has had its turn.
class MessageLoop {
public:
    MessageLoop();
    MessageLoop(const MessageLoop&) = delete;
    MessageLoop& operator=(const MessageLoop&) = delete;
    /// Destroys tasks that did not run, and the socket.
    ~MessageLoop();

    /// Opens the socket; peers that connect from now on wait until `run`. Call once, before `run`.
    /// False with a one-line `error` when the socket cannot be had.
    bool listen(const std::string& socketPath, const MessageLimits& limits, std::string& error);
    /// See `RequestDispatcher::serve`. Before `run` only.
    void serve(std::string interfaceName, Invoker& invoker, Executable& executable) {
        m_dispatcher.serve(std::move(interfaceName), invoker, executable);
    }

    /// No peer is welcomed under `channel` from now on, and messages to it reach nobody. Before
    /// `run` only. False with a one-line `error` when it is reserved already, or no name.
    bool reserveChannel(std::string_view channel, std::string& error) {
        return m_peers.reserve(channel, error);
    }

    /// Calls `whenGone` on the message thread each time when a peer has gone, with its channel
    /// name, which is free by then. Before `run` only.
    void watchPeers(std::function<void(const std::string& channel)> whenGone) {
        m_whenGone = std::move(whenGone);
    }

    /// Calls `whenReadable` on the message thread each time when there is something to be read from
    /// `descriptor`, which outlives `run`. Before `run` only. False when the kernel refuses it.
    bool attend(int descriptor, std::function<void()> whenReadable);

    /// Serves until `stop`, then closes all connections. Blocks. False without a socket, and when
    /// the kernel refused to go on; an error line says why.
    bool run();
    /// Makes `run` return after the message that is being handled, at once if it is called later.
    /// Safe from every thread and from signal handlers.
    void stop() noexcept;
    /// Runs `task` on the message thread, between two messages; tasks run in the order of their
    /// posting. Safe from every thread. What is posted before `stop` runs, even when `run` is
    /// called later; what comes after may not.
    void postTask(std::function<void()> task);

    /// Messages from the service to its peers. Safe from every thread.
    PeerCalls& calls() { return m_calls; }
    /// The channel name of the peer whose message is being handled, or empty. Message thread only.
    const std::string& currentChannel() const { return m_dispatcher.currentChannel(); }

    // For whoever reads or writes a connection outside of its turn.
    using ConnectionPointer = std::shared_ptr<Connection>;
    bool isMessageThread() const { return m_thread.load() == std::this_thread::get_id(); }
    bool stopping() const { return m_stopRequested.load(std::memory_order_relaxed); }
    /// Sees soon to what is in the connection's buffers, and whether it has ended. From every
    /// thread.
    void revisit(const ConnectionPointer& connection);
    /// Writes what waits for the connections that are to be revisited. Message thread only.
    void flushRevisits();
    /// Has the postponed replies given. Message thread only.
    void endTurn();

private:
    bool watch(int descriptor);
    bool waitAndServe();
    void serveEvent(const epoll_event& event);
    void wake() noexcept;
    void clearWake() noexcept;
    void admit(FileDescriptor socket);
    void turn(const ConnectionPointer& connection, std::uint32_t events);
    bool receiveAndServe(const ConnectionPointer& connection, std::size_t& budget);
    bool serveReceived(const ConnectionPointer& connection, std::size_t& budget);
    bool readable(const Connection& connection) const;
    void waitFor(const ConnectionPointer& connection);
    void updateInterest(Connection& connection, std::size_t unsent);
    void close(const ConnectionPointer& connection);
    void release(const Connection& connection);
    void unwatch(Connection& connection);
    void runRevisits();
    void putOff(const ConnectionPointer& connection);
    void runPutOff();
    void turnIfHere(const ConnectionPointer& connection);

    FileDescriptor m_epoll;
    FileDescriptor m_wakeUp;
    PeerAdmission m_admission;
    MessageLimits m_limits;
    std::unordered_map<int, ConnectionPointer> m_connections;
    std::unordered_map<int, std::function<void()>> m_attended;
    std::vector<epoll_event> m_events;
    PeerDirectory m_peers;
    std::function<void(const std::string& channel)> m_whenGone;
    RequestDispatcher m_dispatcher;
    PeerProtocol m_protocol;
    PeerCalls m_calls;
    TaskQueue m_tasks;
    std::vector<ConnectionPointer> m_revisits;
    std::vector<ConnectionPointer> m_putOff;  // have frames left for another turn
    std::atomic<std::thread::id> m_thread{};
    std::atomic<bool> m_stopRequested{false};
};

}  // namespace vireo
