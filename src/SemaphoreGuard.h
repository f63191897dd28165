#pragma once

#include "sync/Semaphore.h"

namespace vireo {

/// Takes a semaphore, waiting without limit, and gives it back at the end of the scope.
class SemaphoreGuard {
public:
    explicit SemaphoreGuard(Semaphore& semaphore) : m_semaphore(semaphore) { m_semaphore.take(); }
    ~SemaphoreGuard() { m_semaphore.give(); }
    SemaphoreGuard(const SemaphoreGuard&) = delete;
    SemaphoreGuard& operator=(const SemaphoreGuard&) = delete;

private:
    Semaphore& m_semaphore;
};

}  // namespace vireo
