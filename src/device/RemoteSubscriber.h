#pragma once

#include "RemoteMgmtCallbackIfc.h"
#include "sync/Semaphore.h"

namespace vireo {

/// The one remote management client that wants to be told of long-running work. Safe from every
/// thread; the subscriber is called without the semaphore.
class RemoteSubscriber {
public:
    /// False, and the old one stays, while there is one; false for null.
    bool subscribe(RemoteMgmtCallbackIfc* callback);
    /// False unless `callback` is the stored one.
    bool unsubscribe(RemoteMgmtCallbackIfc* callback);
    /// A subscriber that has left frees its place.
    void forget(const RemoteMgmtCallbackIfc& callback);
    /// False when there is no subscriber.
    bool warn(RemoteMgmtCallbackIfc::eRemoteOperationType type);
    /// Tells the subscriber, if there is one, how a download goes on.
    void tellProgress(int percent);

private:
    RemoteMgmtCallbackIfc* current();

    Semaphore m_semaphore{1, 1};
    RemoteMgmtCallbackIfc* m_remote_callback_service = nullptr;
};

}  // namespace vireo
