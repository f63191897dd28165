#include "sync/Semaphore.h"

namespace vireo {

Semaphore::Semaphore(unsigned initialCount, unsigned maximumCount)
    : m_count(initialCount), m_maximum(maximumCount) {}

void Semaphore::take() {
    std::unique_lock lock(m_mutex);
    m_available.wait(lock, [this] { return m_count > 0; });
    --m_count;
}

bool Semaphore::takeFor(std::chrono::milliseconds limit) {
    std::unique_lock lock(m_mutex);
    if (!m_available.wait_for(lock, limit, [this] { return m_count > 0; })) {
        return false;
    }
    --m_count;
    return true;
}

bool Semaphore::give() {
    {
        const std::lock_guard lock(m_mutex);
        if (m_count >= m_maximum) {
            return false;
        }
        ++m_count;
    }
    m_available.notify_one();
    return true;
}

}  // namespace vireo
