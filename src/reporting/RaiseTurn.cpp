#include "reporting/RaiseTurn.h"

#include <chrono>

#include "LogMacros.h"
#include "items/RegistryHold.h"

namespace vireo {

RaiseTurn::RaiseTurn(RaiseGate& gate) : m_gate(gate), m_isMine(take()) {
    if (m_isMine) {
        m_gate.m_raiser.store(std::this_thread::get_id(), std::memory_order_relaxed);
    }
}

RaiseTurn::~RaiseTurn() {
    if (m_isMine) {
        m_gate.m_raiser.store(std::thread::id(), std::memory_order_relaxed);
        m_gate.m_semaphore.give();
    }
}

bool RaiseTurn::take() {
    if (m_gate.m_raiser.load(std::memory_order_relaxed) == std::this_thread::get_id()) {
        VCMS_LOG(kLogWarning, "no trap: this thread is raising another one");
        return false;
    }
    if (m_gate.m_registry == nullptr || !m_gate.m_registry->isMine()) {
        m_gate.m_semaphore.take();
        return true;
    }
    const bool isFree = m_gate.m_semaphore.takeFor(std::chrono::milliseconds(0));
    if (!isFree) {
        VCMS_LOG(kLogWarning,
                 "no trap: another one is being raised, and a write of several items cannot wait");
    }
    return isFree;
}

}  // namespace vireo
