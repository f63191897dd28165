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
    m_isClaimed = false;
    m_ender = std::thread::id();
    m_released.notify_all();
}

void CurrentDownload::begin(const Facts& facts) {
    m_completion.takeFor(std::chrono::milliseconds(0));  // of a caller that did not come for it
    const std::lock_guard lock(m_mutex);
    m_facts = facts;
    m_progress = 0;
    m_hasBurnStarted = false;
    m_hasBurnEnded = false;
    m_outcome = false;
    m_isUnderWay = true;
}

void CurrentDownload::cancel() {
    const std::lock_guard lock(m_mutex);
    m_isUnderWay = false;
    m_facts.callback = nullptr;
}

CurrentDownload::Facts CurrentDownload::facts() const {
    const std::lock_guard lock(m_mutex);
    return m_facts;
}

int CurrentDownload::progress() const {
    const std::lock_guard lock(m_mutex);
    return m_progress;
}

void CurrentDownload::setProgress(int percent) {
    const std::lock_guard lock(m_mutex);
    m_progress = percent;
}

bool CurrentDownload::tryBurn() {
    const std::lock_guard lock(m_mutex);
    return !std::exchange(m_hasBurnStarted, true);
}

void CurrentDownload::beginEnd() {
    const std::lock_guard lock(m_mutex);
    if (m_isUnderWay) {
        m_ender = std::this_thread::get_id();
    }
}

bool CurrentDownload::isUnderWay() const {
    const std::lock_guard lock(m_mutex);
    return m_isUnderWay;
}

void CurrentDownload::endTransfer() {
    const std::lock_guard lock(m_mutex);
    m_isUnderWay = false;
}

void CurrentDownload::finish(bool isBurning) {
    {
        const std::lock_guard lock(m_mutex);
        if (!isBurning || m_hasBurnEnded) {
            m_facts.callback = nullptr;
        }
    }
    release();
}

void CurrentDownload::endBurn() {
    const std::lock_guard lock(m_mutex);
    m_hasBurnEnded = true;
    m_facts.callback = nullptr;
}

void CurrentDownload::deliver(bool success) {
    {
        const std::lock_guard lock(m_mutex);
        m_outcome = success;
        m_facts.isAwaited = false;
    }
    m_completion.give();
}

bool CurrentDownload::await() {
    m_completion.take();
    const std::lock_guard lock(m_mutex);
    return m_outcome;
}

}  // namespace vireo
