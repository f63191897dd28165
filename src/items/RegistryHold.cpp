#include "items/RegistryHold.h"

#include <utility>

#include "Boundary.h"

namespace vireo {

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
    for (const auto& task : tasks) {
        guardedCall("after the registry was given back", task);
    }
}

}  // namespace vireo
