#include "messages/AwaitedReplies.h"

#include <utility>

namespace vireo {

bool AwaitedReplies::begin(Call& call) {
    const std::lock_guard lock(m_mutex);
    if (m_hasEnded || m_isStuck.load(std::memory_order_relaxed)) {
        return false;
    }
    do {
        call.id = ++m_lastId;
    } while (!m_calls.try_emplace(call.id, &call).second);
    return true;
}

void AwaitedReplies::end(const Call& call) {
    const std::lock_guard lock(m_mutex);
    m_calls.erase(call.id);
    if (!isOverLocked(call)) {
        m_isStuck.store(true, std::memory_order_relaxed);
    }
}

bool AwaitedReplies::complete(std::uint32_t id, std::string_view payload) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_calls.find(id);
    if (found == m_calls.end() || found->second->isAnswered) {
        return false;
    }
    found->second->reply = payload;
    found->second->isAnswered = true;
    m_changed.notify_all();
    return true;
}

bool AwaitedReplies::isOver(const Call& call) {
    const std::lock_guard lock(m_mutex);
    return isOverLocked(call);
}

void AwaitedReplies::markEnded() {
    const std::lock_guard lock(m_mutex);
    m_hasEnded = true;
    m_changed.notify_all();
}

bool AwaitedReplies::tryRead() {
    const std::lock_guard lock(m_mutex);
    if (m_readDepth > 0 && m_reader != std::this_thread::get_id()) {
        return false;
    }
    m_reader = std::this_thread::get_id();
    ++m_readDepth;
    return true;
}

void AwaitedReplies::stopReading() {
    const std::lock_guard lock(m_mutex);
    if (--m_readDepth == 0 && !m_calls.empty()) {
        m_changed.notify_all();
    }
}

void AwaitedReplies::waitForReader(const Call& call, Clock::time_point deadline,
                                   bool isMessageThread) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_until(lock, deadline, [&] {
        return isOverLocked(call) || m_readDepth == 0 || (isMessageThread && !m_deferred.empty());
    });
}

void AwaitedReplies::defer(FrameFinding finding, const Frame& frame) {
    const std::lock_guard lock(m_mutex);
    m_deferred.emplace_back(finding, frame);
    m_deferredBytes += m_deferred.back().size();
    m_hasDeferred.store(true, std::memory_order_relaxed);
    m_changed.notify_all();
}

bool AwaitedReplies::takeDeferred(OwnedFrame& frame) {
    if (!m_hasDeferred.load(std::memory_order_relaxed)) {
        return false;
    }
    const std::lock_guard lock(m_mutex);
    if (m_deferred.empty()) {
        m_hasDeferred.store(false, std::memory_order_relaxed);
        return false;
    }
    frame = std::move(m_deferred.front());
    m_deferred.pop_front();
    m_deferredBytes -= frame.size();
    return true;
}

}  // namespace vireo
