#include "signature/SideThread.h"

#include <utility>

namespace vireo {

SideThread::SideThread() : m_thread([this] { work(); }) {}

SideThread::~SideThread() {
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void SideThread::awaitDone(std::unique_lock<std::mutex>& lock) {
    m_changed.wait(lock, [this] { return !m_task; });
    if (m_failure) {
        std::rethrow_exception(std::exchange(m_failure, nullptr));
    }
}

void SideThread::start(std::function<void()> task) {
    std::unique_lock lock(m_mutex);
    awaitDone(lock);
    m_task = std::move(task);
    m_changed.notify_all();
}

void SideThread::finish() {
    std::unique_lock lock(m_mutex);
    awaitDone(lock);
}

void SideThread::work() {
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_task || m_isEnding; });
        if (!m_task) {
            return;
        }
        lock.unlock();
        std::exception_ptr failure;
        try {
            m_task();
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        m_task = nullptr;
        m_failure = failure;
        m_changed.notify_all();
    }
}

}  // namespace vireo
