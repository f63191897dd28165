#include "CallTurn.h"

namespace vireo {

void CallTurn::take() {
    std::unique_lock lock(m_mutex);
    const std::thread::id self = std::this_thread::get_id();
    if (m_owner != self) {
        const std::uint64_t ticket = m_nextTicket++;
        m_given.wait(lock, [&] { return m_served == ticket; });
        m_owner = self;
    }
    ++m_depth;
}

void CallTurn::give() {
    const std::lock_guard lock(m_mutex);
    if (--m_depth == 0) {
        m_owner = {};
        ++m_served;
        m_given.notify_all();  // under the lock: the turn may be gone as soon as it is free
    }
}

bool CallTurn::isMine() const {
    const std::lock_guard lock(m_mutex);
    return m_owner == std::this_thread::get_id();
}

}  // namespace vireo
