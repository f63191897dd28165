#include "items/RegistryHold.h"

#include <utility>

#include "Boundary.h"

namespace vireo {

namespace {

// An owner may announce as much as it likes before it answers a write. Its changes are records that
// may be as large as a message.
constexpr std::size_t kMostTasks = 64;

}  // namespace

void RegistrySemaphore::afterGive(Task task) {
    m_afterGive.push_back(std::move(task));
    if (m_afterGive.size() >= kMostTasks) {
        run(std::exchange(m_afterGive, {}));
    }
}

void RegistrySemaphore::run(const std::vector<Task>& tasks) {
    for (const auto& task : tasks) {
        guardedCall("after the registry was given back", task);
    }
}

RegistryHold::RegistryHold(RegistrySemaphore& registry) : m_registry(registry) {
    if (!registry.isMine()) {
        registry.m_semaphore.take();
        registry.m_owner.store(std::this_thread::get_id(), std::memory_order_relaxed);
    }
    ++registry.m_depth;
}

RegistryHold::~RegistryHold() {
    if (--m_registry.m_depth > 0) {
        return;
    }
    const std::vector<RegistrySemaphore::Task> tasks = std::exchange(m_registry.m_afterGive, {});
    m_registry.m_owner.store(std::thread::id(), std::memory_order_relaxed);
    m_registry.m_semaphore.give();
    RegistrySemaphore::run(tasks);
}

}  // namespace vireo
