#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

namespace vireo {

/// Tasks from any thread for the message thread, in the order in which they were posted.
class TaskQueue {
public:
    /// True when the queue was empty before, so that the message thread has to be woken.
    bool post(std::function<void()> task);
    /// Runs what was posted before the call; what these tasks post waits for the next one. A task
    /// that throws gets an error line.
    void runPosted();

private:
    std::mutex m_mutex;
    std::vector<std::function<void()>> m_tasks;
    /// Whether there are tasks, to be asked without the lock after every turn.
    std::atomic<bool> m_waiting{false};
};

}  // namespace vireo
