#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "Visibility.h"

namespace vireo {

/// A counting semaphore with a maximum. Safe from every thread.
class VIREO_API Semaphore {
public:
    /// Starts at `initialCount`, never counts above `maximumCount`.
    Semaphore(unsigned initialCount, unsigned maximumCount);
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;

    /// Waits without limit until the count is above zero and lowers it.
    void take();
    /// Waits at most `limit`; false when the count stayed at zero.
    bool takeFor(std::chrono::milliseconds limit);
    /// Raises the count and wakes one waiter; false (and no change) at the maximum.
    bool give();

private:
    std::mutex m_mutex;
    std::condition_variable m_available;
    unsigned m_count;
    const unsigned m_maximum;
};

}  // namespace vireo
