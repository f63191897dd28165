#pragma once

#include <chrono>
#include <mutex>
#include <set>
#include <unordered_map>
#include <utility>

#include "messages/FileDescriptor.h"
#include "service/TimerFacility.h"

namespace vireo {

class MessageLoop;

/// The timers of the services in this process, on one clock of the kernel that the message loop
/// waits for. Time goes on while the machine's own clock is set. A timer that is stopped or removed
/// on another thread than the message thread may be firing at that moment.
class TimerQueue : public TimerFacility {
public:
    /// Before `loop` runs. It must not run any more when the queue is destroyed.
    explicit TimerQueue(MessageLoop& loop);
    TimerQueue(const TimerQueue&) = delete;
    TimerQueue& operator=(const TimerQueue&) = delete;
    ~TimerQueue() override = default;

    int create(Executable& owner, int milliseconds) override;
    int start(int id) override;
    int stop(int id) override;
    int remove(int id) override;

private:
    using Clock = std::chrono::steady_clock;

    struct Timer {
        Executable* owner;
        std::chrono::milliseconds duration;
        Clock::time_point due;  ///< of one that runs
        bool isRunning;
    };

    void fireDue();
    Executable* takeDue(Clock::time_point now, int& id);
    void halt(int id, Timer& timer);
    void setClock();

    FileDescriptor m_clock;
    std::mutex m_mutex;
    std::unordered_map<int, Timer> m_timers;
    std::set<std::pair<Clock::time_point, int>> m_due;  ///< those that run, the next one first
    Clock::time_point m_set;                            ///< when the kernel's clock will wake us
    int m_lastId = 0;
};

}  // namespace vireo
