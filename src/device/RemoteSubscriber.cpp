#include "device/RemoteSubscriber.h"

#include "Boundary.h"
#include "SemaphoreGuard.h"

namespace vireo {

bool RemoteSubscriber::subscribe(RemoteMgmtCallbackIfc* callback) {
    const SemaphoreGuard guard(m_semaphore);
    if (m_remote_callback_service != nullptr) {
        VCMS_LOG(kLogWarning,
                 "VireoClientMgmt::subscribeForRemoteProgress() m_remote_callback_service - "
                 "subscription already in use");
        return false;
    }
    m_remote_callback_service = callback;
    return callback != nullptr;
}

bool RemoteSubscriber::unsubscribe(RemoteMgmtCallbackIfc* callback) {
    const SemaphoreGuard guard(m_semaphore);
    if (m_remote_callback_service == nullptr || m_remote_callback_service != callback) {
        // Deliberate: the text names the subscribe function.
        VCMS_LOG(kLogWarning,
                 "VireoClientMgmt::subscribeForRemoteProgress() m_remote_callback_service - "
                 "cannot unsubscribe");
        return false;
    }
    m_remote_callback_service = nullptr;
    return true;
}

void RemoteSubscriber::forget(const RemoteMgmtCallbackIfc& callback) {
    const SemaphoreGuard guard(m_semaphore);
    if (m_remote_callback_service == &callback) {
        m_remote_callback_service = nullptr;
    }
}

RemoteMgmtCallbackIfc* RemoteSubscriber::current() {
    const SemaphoreGuard guard(m_semaphore);
    return m_remote_callback_service;
}

bool RemoteSubscriber::warn(RemoteMgmtCallbackIfc::eRemoteOperationType type) {
    RemoteMgmtCallbackIfc* const subscriber = current();
    if (subscriber != nullptr) {
        guardedCall("informRemoteWarning", [&] { subscriber->informRemoteWarning(type); });
    }
    return subscriber != nullptr;
}

void RemoteSubscriber::tellProgress(int percent) {
    if (RemoteMgmtCallbackIfc* const subscriber = current()) {
        guardedCall("informRemoteProgress", [&] {
            subscriber->informRemoteProgress(percent, RemoteMgmtCallbackIfc::eNoRemoteRequest);
        });
    }
}

}  // namespace vireo
