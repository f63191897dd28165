#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "sync/Semaphore.h"

namespace vireo {

/// The registry semaphore. It is binary and is only ever taken through `RegistryHold`.
class RegistrySemaphore {
public:
    using Task = std::function<void()>;

    /// Whether this thread holds the registry.
    bool isMine() const {
        return m_owner.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }
    /// Runs `task` after this thread has given the semaphore back, in order; but not more of them
    /// gather than memory bears: then they run at once. Only while this thread holds it.
    void afterGive(Task task);

private:
    friend class RegistryHold;

    static void run(const std::vector<Task>& tasks);

    Semaphore m_semaphore{1, 1};
    std::atomic<std::thread::id> m_owner{};
    unsigned m_depth = 0;           // touched by the owner alone
    std::vector<Task> m_afterGive;  // touched by the owner alone
};

/// Holds the registry from construction to destruction. A take by the thread that holds it already
/// counts and does not wait, so agents may call back and writes may look owners up; the semaphore
/// is given when the outermost hold ends. Then what `afterGive` collected runs, in order.
class RegistryHold {
public:
    explicit RegistryHold(RegistrySemaphore& registry);
    ~RegistryHold();
    RegistryHold(const RegistryHold&) = delete;
    RegistryHold& operator=(const RegistryHold&) = delete;

private:
    RegistrySemaphore& m_registry;
};

}  // namespace vireo
