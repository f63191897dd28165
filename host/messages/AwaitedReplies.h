#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>

#include "messages/Frame.h"

namespace vireo {

/// The threads that wait for replies of one peer, and who of them reads its stream: one at a time,
/// normally the message thread. Frames that another thread comes across are kept here for the
/// message thread. Safe from every thread.
class AwaitedReplies {
public:
    using Clock = std::chrono::steady_clock;

    /// One request that waits for its reply. Lives on the stack of the thread that waits.
    struct Call {
        std::uint32_t id = 0;
        std::string reply;
        bool isAnswered = false;
    };

    /// Gives the call its id. False when the connection has ended, or the peer let an earlier call
    /// run out of time and has sent nothing since.
    bool begin(Call& call);
    /// After this nobody touches the call. One without an answer makes the peer count as stuck.
    void end(const Call& call);
    /// The reply `id` has come. False when nobody waits for it any more.
    bool complete(std::uint32_t id, std::string_view payload);
    /// Whether nothing more can come of the call.
    bool isOver(const Call& call);
    /// Something came from the peer, so it is not stuck.
    void heard() {
        if (m_isStuck.load(std::memory_order_relaxed)) {
            m_isStuck.store(false, std::memory_order_relaxed);
        }
    }
    /// The connection has ended: every wait is over.
    void markEnded();

    /// Makes this thread the reader, unless another one is; counts when it is already.
    bool tryRead();
    /// Takes one `tryRead` back.
    void stopReading();
    /// Sleeps while another thread reads, until the call is over, `deadline`, or, for a message
    /// thread, there is a frame for it.
    void waitForReader(const Call& call, Clock::time_point deadline, bool isMessageThread);

    /// Keeps a frame for the message thread.
    void defer(FrameFinding finding, const Frame& frame);
    /// The bytes of such frames.
    std::size_t deferredBytes() const { return m_deferredBytes.load(std::memory_order_relaxed); }
    /// The next such frame; false when there is none. On the message thread.
    bool takeDeferred(OwnedFrame& frame);

private:
    bool isOverLocked(const Call& call) const { return call.isAnswered || m_hasEnded; }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::unordered_map<std::uint32_t, Call*> m_calls;
    std::uint32_t m_lastId = 0;
    bool m_hasEnded = false;
    std::thread::id m_reader;
    unsigned m_readDepth = 0;
    std::deque<OwnedFrame> m_deferred;
    std::atomic<bool> m_hasDeferred{false};
    std::atomic<std::size_t> m_deferredBytes{0};
    std::atomic<bool> m_isStuck{false};
};

}  // namespace vireo
