#include "runtime/TimerQueue.h"

#include <sys/timerfd.h>

#include <cstdint>
#include <exception>
#include <limits>

#include "log/Log.h"
#include "messages/MessageLoop.h"
#include "service/Executable.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "TimerQueue";
constexpr const char* kFile = "./host/runtime/TimerQueue";

/// Services throw nothing; one that does must not take the message thread with it.
void fire(Executable& owner, int id) {
    try {
        owner.timerEvent(id);
    } catch (const std::exception& exception) {
        logExc(kComponent, kFile, __LINE__, "a timer event let an exception out", exception);
    } catch (...) {
        if (loggingOnUni(kLogError)) {
            logAppUni(kComponent, kFile, kLogError, __LINE__,
                      "the event of timer %d let something out that is no standard exception", id);
        }
    }
}

}  // namespace

TimerQueue::TimerQueue(MessageLoop& loop)
    : m_clock(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) {
    if (m_clock && !loop.attend(m_clock.get(), [this] { fireDue(); })) {
        m_clock.reset();
    }
}

int TimerQueue::create(Executable& owner, int milliseconds) {
    const std::lock_guard lock(m_mutex);
    if (!m_clock || milliseconds < 1 || m_lastId == std::numeric_limits<int>::max()) {
        return -1;
    }
    m_timers.emplace(++m_lastId, Timer{&owner, std::chrono::milliseconds(milliseconds), {}, false});
    return m_lastId;
}

int TimerQueue::start(int id) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_timers.find(id);
    if (found == m_timers.end()) {
        return 0;
    }
    Timer& timer = found->second;
    halt(id, timer);
    timer.due = Clock::now() + timer.duration;
    timer.isRunning = true;
    m_due.emplace(timer.due, id);
    setClock();
    return 1;
}

int TimerQueue::stop(int id) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_timers.find(id);
    if (found == m_timers.end()) {
        return 0;
    }
    halt(id, found->second);
    return 1;
}

int TimerQueue::remove(int id) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_timers.find(id);
    if (found == m_timers.end()) {
        return 0;
    }
    halt(id, found->second);
    m_timers.erase(found);
    return 1;
}

void TimerQueue::halt(int id, Timer& timer) {
    if (timer.isRunning) {
        m_due.erase({timer.due, id});
        timer.isRunning = false;
    }
}

void TimerQueue::setClock() {
    // A clock that is set too early wakes the loop once for nothing, which is cheaper than to set
    // it again at each stop.
    if (m_due.empty() || m_set == m_due.begin()->first) {
        return;
    }
    m_set = m_due.begin()->first;
    const std::chrono::nanoseconds due = m_set.time_since_epoch();
    const auto seconds = std::chrono::floor<std::chrono::seconds>(due);
    itimerspec setting{};
    setting.it_value.tv_sec = static_cast<time_t>(seconds.count());
    setting.it_value.tv_nsec = static_cast<long>((due - seconds).count());
    ::timerfd_settime(m_clock.get(), TFD_TIMER_ABSTIME, &setting, nullptr);
}

Executable* TimerQueue::takeDue(Clock::time_point now, int& id) {
    const std::lock_guard lock(m_mutex);
    if (m_due.empty() || m_due.begin()->first > now) {
        setClock();
        return nullptr;
    }
    id = m_due.begin()->second;
    Timer& timer = m_timers.at(id);
    halt(id, timer);
    return timer.owner;
}

void TimerQueue::fireDue() {
    std::uint64_t expirations = 0;
    [[maybe_unused]] const ssize_t ignored =
        ::read(m_clock.get(), &expirations, sizeof expirations);
    {
        const std::lock_guard lock(m_mutex);
        m_set = {};
    }
    // One that is started again by its own event waits for the next turn, however short it is.
    const Clock::time_point now = Clock::now();
    int id = 0;
    while (Executable* const owner = takeDue(now, id)) {
        fire(*owner, id);
    }
}

}  // namespace vireo
