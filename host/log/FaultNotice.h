#pragma once

#include <atomic>
#include <mutex>
#include <string>

namespace vireo {

/// Remembers whether a lasting fault has been reported, so that it is said once when it begins and
/// once when it ends, however often it is met. Safe from every thread.
class FaultNotice {
public:
    /// True when this fault has to be reported: there was none, or another one.
    bool raise(const std::string& fault) {
        const std::lock_guard lock(m_mutex);
        const bool isNews = !m_isRaised.exchange(true) || m_fault != fault;
        m_fault = fault;
        return isNews;
    }
    /// True when the end has to be reported: there was a fault. Costs one branch when there is
    /// none.
    bool clear() {
        return m_isRaised.load(std::memory_order_relaxed) && m_isRaised.exchange(false);
    }
    bool isRaised() const { return m_isRaised.load(std::memory_order_relaxed); }

private:
    std::mutex m_mutex;
    std::atomic<bool> m_isRaised{false};
    std::string m_fault;
};

}  // namespace vireo
