#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

namespace vireo {

/// A thread that does one task beside its owner, and then the next. For one owner.
class SideThread {
public:
    /// Throws `std::system_error` when the system has no thread to give.
    SideThread();
    SideThread(const SideThread&) = delete;
    SideThread& operator=(const SideThread&) = delete;
    /// Waits for the task that is being done; what it throws is lost.
    ~SideThread();

    /// Waits as `finish` does, and has the task begun.
    void start(std::function<void()> task);
    /// Waits until the last task is done. Throws what it has thrown.
    void finish();

private:
    void work();
    void awaitDone(std::unique_lock<std::mutex>& lock);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::function<void()> m_task;  ///< empty: nothing is to be done
    std::exception_ptr m_failure;
    bool m_isEnding = false;
    std::thread m_thread;  ///< last: it uses all of the others
};

}  // namespace vireo
