#include "files/FileDeploymentTimer.h"

#include "LogMacros.h"
#include "service/TimerFacility.h"

namespace vireo {
namespace {

constexpr int kSuccess = 1;
constexpr int kLongestSeconds = 2'000'000;  // the milliseconds are an int

bool isUninitialised(int id) {
    return id == 0 || id == -1;
}

}  // namespace

int FileDeploymentTimer::createTimer(int milliseconds) {
    const int id = m_timers != nullptr ? m_timers->create(m_owner, milliseconds) : -1;
    if (id == -1) {
        VCMS_LOG(kLogError, "Error - Could not create Timer");
    } else {
        VCMS_LOG(kLogDebug, "timer created - duration ms: %d", milliseconds);
    }
    return id;
}

int FileDeploymentTimer::startTimer(int id) {
    if (isUninitialised(id)) {
        VCMS_LOG(kLogError, "Error - Could not start Timer - uninitialised");
        return 0;
    }
    if (m_timers == nullptr || m_timers->start(id) != kSuccess) {
        VCMS_LOG(kLogError, "Error - Could not start Timer - startTimer failed");
        return 0;
    }
    VCMS_LOG(kLogDebug, "timer started");
    return kSuccess;
}

void FileDeploymentTimer::cancelTimer(int id) {
    if (isUninitialised(id)) {
        return;
    }
    if (m_timers == nullptr || m_timers->stop(id) != kSuccess) {
        VCMS_LOG(kLogError, "Error - stopTimer failed");
    } else {
        VCMS_LOG(kLogDebug, "timer cancelled");
    }
}

void FileDeploymentTimer::deleteTimer(int id) {
    if (!isUninitialised(id) && m_timers != nullptr) {
        m_timers->remove(id);
    }
}

bool FileDeploymentTimer::startFileDeploymentTimer(int seconds) {
    if (seconds < 1 || seconds > kLongestSeconds) {
        VCMS_LOG(kLogError, "Tried to set file deployment timer to invalid value %d", seconds);
        return false;
    }
    const std::lock_guard lock(m_mutex);
    if (m_FileManagerTimerId != -1) {
        VCMS_LOG(kLogDebug, "vcms cancelling timer");
        cancelTimer(m_FileManagerTimerId);
        deleteTimer(m_FileManagerTimerId);
    }
    VCMS_LOG(kLogDebug, "vcms creating timer");
    m_FileManagerTimerId = createTimer(seconds * 1000);
    if (m_FileManagerTimerId == -1) {
        return false;
    }
    VCMS_LOG(kLogDebug, "vcms starting timer");
    return startTimer(m_FileManagerTimerId) == kSuccess;
}

void FileDeploymentTimer::timerEvent(int id, const std::function<void()>& onTimeout) {
    int own = 0;
    {
        const std::lock_guard lock(m_mutex);
        own = m_FileManagerTimerId;
    }
    if (id == own) {
        VCMS_LOG(kLogDebug, "timerEvent - file download timer (%d) expired", id);
        onTimeout();
        return;
    }
    VCMS_LOG(kLogError,
             "Error - timerEvent(timerId) unknown timer expired = %d, m_FileManagerTimerId %d", id,
             own);
}

}  // namespace vireo
