#include "files/CurrentDownload.h"

#include <chrono>
#include <utility>

#include "device/GPALAdmin.h"

namespace vireo {
namespace {

// A client that was told of the end may ask for the next file before the rest of the end is done.
constexpr std::chrono::seconds kLongestEnd(2);

}  // namespace

bool CurrentDownload::tryClaim() {
    {
        std::unique_lock lock(m_mutex);
        const bool isEnding = m_ender != std::thread::id() && m_ender != std::this_thread::get_id();
        if (m_isClaimed && isEnding) {
            m_released.wait_for(lock, kLongestEnd, [this] { return !m_isClaimed; });
        }
        if (m_isClaimed) {
            return false;
        }
        m_isClaimed = true;
    }
    if (GPALAdmin::isActive()) {
        release();
        return false;
    }
    return true;
}

void CurrentDownload::release() {
    const std::lock_guard lock(m_mutex);
    giveBack();
}

void CurrentDownload::giveBack() {
    m_isClaimed = false;
    m_ender = std::thread::id();
    m_released.notify_all();
}

void CurrentDownload::begin(const Facts& facts) {
    m_completion.takeFor(std::chrono::milliseconds(0));  // of a caller that did not come for it
    const std::lock_guard lock(m_mutex);
    m_before = std::exchange(m_state, {.facts = facts, .phase = Phase::eTransfer});
    m_isFinished = false;
    m_outcome = false;
}

void CurrentDownload::cancel() {
    const std::lock_guard lock(m_mutex);
    if (m_state.phase == Phase::eTransfer) {
        m_state = std::exchange(m_before, {});
    }
}

CurrentDownload::Facts CurrentDownload::facts() const {
    const std::lock_guard lock(m_mutex);
    return m_state.facts;
}

int CurrentDownload::progress() const {
    const std::lock_guard lock(m_mutex);
    return m_state.progress;
}

void CurrentDownload::setProgress(int percent) {
    const std::lock_guard lock(m_mutex);
    m_state.progress = percent;
}

CurrentDownload::Phase CurrentDownload::phase() const {
    const std::lock_guard lock(m_mutex);
    return m_state.phase;
}

void CurrentDownload::beginEnd() {
    const std::lock_guard lock(m_mutex);
    m_ender = std::this_thread::get_id();
}

void CurrentDownload::finish() {
    const std::lock_guard lock(m_mutex);
    m_isFinished = true;
    if (m_state.phase != Phase::eBurn) {
        m_state.phase = Phase::eNone;
        m_state.facts.callback = nullptr;
        giveBack();
    }
}

bool CurrentDownload::tryBurn() {
    const std::lock_guard lock(m_mutex);
    if (std::exchange(m_state.hasBurnStarted, true)) {
        return false;
    }
    m_state.phase = Phase::eBurn;
    m_ender = std::thread::id();  // a burn takes its time
    return true;
}

void CurrentDownload::endBurn() {
    const std::lock_guard lock(m_mutex);
    m_state.phase = Phase::eNone;
    if (m_isFinished) {
        m_state.facts.callback = nullptr;
        giveBack();
    }
}

void CurrentDownload::dismissCallback() {
    const std::lock_guard lock(m_mutex);
    m_state.facts.callback = nullptr;
}

void CurrentDownload::forget(const LocalMgmtCallbackIfc& callback) {
    const std::lock_guard lock(m_mutex);
    if (m_state.facts.callback == &callback) {
        m_state.facts.callback = nullptr;
    }
}

void CurrentDownload::deliver(bool success) {
    {
        const std::lock_guard lock(m_mutex);
        m_outcome = success;
        m_state.facts.isAwaited = false;
        m_state.phase = Phase::eNone;
    }
    m_completion.give();
}

bool CurrentDownload::await() {
    m_completion.take();
    const std::lock_guard lock(m_mutex);
    return m_outcome;
}

}  // namespace vireo
