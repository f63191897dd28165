#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace vireo {

/// Whose turn it is to use the connection: one thread's at a time, in the order in which they came.
/// The thread that has the turn may take it again, at once. Private to the library.
class CallTurn {
public:
    /// Waits for the turn.
    void take();
    /// Gives back what was taken last.
    void give();
    /// Whether this thread has the turn.
    bool isMine() const;

    /// Has the turn while it lives.
    class Guard {
    public:
        explicit Guard(CallTurn& turn) : m_turn(turn) { m_turn.take(); }
        ~Guard() { m_turn.give(); }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

    private:
        CallTurn& m_turn;
    };

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_given;
    std::uint64_t m_nextTicket = 0;
    std::uint64_t m_served = 0;  // the ticket whose turn it is
    std::thread::id m_owner;
    unsigned m_depth = 0;
};

}  // namespace vireo
