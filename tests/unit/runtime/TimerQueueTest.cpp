#include <chrono>
#include <condition_variable>
#include <future>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <vector>

#include "../messages/LoopFixture.h"
#include "runtime/TimerQueue.h"

namespace vireo::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Notes its timer events, and does what it is told at each.
class Owner : public Executable {
public:
    void timerEvent(int timerId) override {
        if (onEvent) {
            onEvent(timerId);
        }
        const std::lock_guard lock(m_mutex);
        m_events.push_back(timerId);
        m_changed.notify_all();
    }
    /// Waits until there were so many; false after half a minute.
    bool awaitEvents(std::size_t count) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(30),
                                  [&] { return m_events.size() >= count; });
    }
    std::vector<int> events() {
        const std::lock_guard lock(m_mutex);
        return m_events;
    }

    std::function<void(int)> onEvent;  ///< set before the loop runs

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<int> m_events;
};

class TimerQueueTest : public LoopFixture {
protected:
    void TearDown() override { stop(); }

    /// Does something on the message thread and waits for its end.
    template <class Task>
    auto onMessageThread(Task task) {
        std::promise<decltype(task())> result;
        m_loop.postTask([&] { result.set_value(task()); });
        return result.get_future().get();
    }

    int started(int duration) {
        const int id = m_timers.create(m_owner, duration);
        EXPECT_EQ(m_timers.start(id), 1);
        return id;
    }

    /// Keeps this thread until timers of a millisecond are due, and the clock of the kernel has
    /// rung.
    static void letBeDue() {
        const Clock::time_point due = Clock::now() + milliseconds(5);
        while (Clock::now() < due) {
        }
    }

    Owner m_owner;
    TimerQueue m_timers{m_loop};
};

TEST_F(TimerQueueTest, IdsBeginAtOneAndAreNotUsedAgain) {
    start();
    for (const int duration : {0, -1, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(m_timers.create(m_owner, duration), -1) << duration;
    }
    EXPECT_EQ(m_timers.create(m_owner, 1), 1);
    EXPECT_EQ(m_timers.create(m_owner, std::numeric_limits<int>::max()), 2);
    EXPECT_EQ(m_timers.start(2), 1);
    EXPECT_EQ(m_timers.remove(2), 1);
    EXPECT_EQ(m_timers.create(m_owner, 1), 3);
    for (const int unknown : {-1, 0, 2, 4}) {
        EXPECT_EQ(m_timers.start(unknown), 0) << unknown;
        EXPECT_EQ(m_timers.stop(unknown), 0) << unknown;
        EXPECT_EQ(m_timers.remove(unknown), 0) << unknown;
    }
    EXPECT_EQ(m_timers.stop(1), 1) << "never started";
}

TEST_F(TimerQueueTest, FiresOncePerStartOnTheMessageThreadAndNotTooEarly) {
    m_owner.onEvent = [this](int) { EXPECT_TRUE(m_loop.isMessageThread()); };
    start();
    const int id = m_timers.create(m_owner, 30);
    for (std::size_t round = 1; round <= 3; ++round) {
        const Clock::time_point begin = Clock::now();
        EXPECT_EQ(m_timers.start(id), 1);
        ASSERT_TRUE(m_owner.awaitEvents(round));
        EXPECT_GE(Clock::now() - begin, milliseconds(30));
    }
    const int later = started(40);
    ASSERT_TRUE(m_owner.awaitEvents(4));
    EXPECT_EQ(m_owner.events(), (std::vector<int>{id, id, id, later})) << "one shot each";
    EXPECT_EQ(m_timers.stop(id), 1) << "after it has fired";
}

TEST_F(TimerQueueTest, TimersFireInTheOrderOfTheirTimes) {
    start();
    const int third = started(400);
    const int first = started(1);
    const int second = started(150);
    ASSERT_TRUE(m_owner.awaitEvents(3));
    EXPECT_EQ(m_owner.events(), (std::vector<int>{first, second, third}));
}

TEST_F(TimerQueueTest, StartingAgainBeginsAnew) {
    const int id = m_timers.create(m_owner, 60);
    const int early = m_timers.create(m_owner, 30);
    m_owner.onEvent = [&](int fired) {
        if (fired == early) {
            EXPECT_EQ(m_timers.start(id), 1);
        }
    };
    start();
    const Clock::time_point begin = Clock::now();
    onMessageThread([&] { return m_timers.start(id) + m_timers.start(early); });
    ASSERT_TRUE(m_owner.awaitEvents(2));
    EXPECT_GE(Clock::now() - begin, milliseconds(90));
    EXPECT_EQ(m_owner.events(), (std::vector<int>{early, id}));
}

TEST_F(TimerQueueTest, WhatIsStoppedOrRemovedOnTheMessageThreadDoesNotFireAnyMore) {
    start();
    onMessageThread([this] {
        const int stopped = started(1);
        const int removed = started(1);
        letBeDue();
        return m_timers.stop(stopped) + m_timers.remove(removed);
    });
    const int last = started(20);
    ASSERT_TRUE(m_owner.awaitEvents(1));
    EXPECT_EQ(m_owner.events(), std::vector<int>{last});
}

TEST_F(TimerQueueTest, AnEventMayStopStartRemoveAndThrow) {
    int twin = 0;
    int rounds = 0;
    m_owner.onEvent = [&](int id) {
        if (id == 1 && ++rounds < 5) {
            EXPECT_EQ(m_timers.start(id), 1);
            EXPECT_EQ(m_timers.remove(twin), rounds == 1 ? 1 : 0);
        } else if (id == 1) {
            EXPECT_EQ(m_timers.remove(id), 1);
            throw std::runtime_error("out of order");
        }
    };
    start();
    onMessageThread([&] {
        const int first = started(1);
        twin = started(1);  // due in the same turn
        letBeDue();
        return first;
    });
    ASSERT_TRUE(m_owner.awaitEvents(4));
    const int last = started(30);
    ASSERT_TRUE(m_owner.awaitEvents(5));
    EXPECT_EQ(m_owner.events(), (std::vector<int>{1, 1, 1, 1, last}))
        << "the fifth event threw, and the twin was removed";
    EXPECT_EQ(m_log.count(kLogError, "out of order"), 1);
    EXPECT_EQ(m_timers.start(1), 0);
}

TEST_F(TimerQueueTest, ManyTimersFromManyThreadsAllFire) {
    constexpr int kThreads = 4;
    constexpr int kEach = 500;
    start();
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([this] {
            for (int n = 0; n < kEach; ++n) {
                const int kept = started(1 + n % 7);
                const int dropped = started(60'000);
                EXPECT_EQ(n % 2 == 0 ? m_timers.stop(dropped) : m_timers.remove(dropped), 1);
                EXPECT_GT(kept, 0);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    ASSERT_TRUE(m_owner.awaitEvents(kThreads * kEach));
    EXPECT_EQ(m_owner.events().size(), std::size_t{kThreads * kEach});
}

}  // namespace
}  // namespace vireo::test
