#pragma once

#include "Visibility.h"

namespace vireo {

class RemoteMgmtCallbackIfc;

/// The remote management interface. Safe from every thread.
class VIREO_API RemoteMgmtIfc {
public:
    virtual ~RemoteMgmtIfc() = default;
    /// Stores the one subscriber (not owned; it unsubscribes before it goes). False, and the old
    /// one stays, while there is one.
    virtual bool subscribeForRemoteProgress(RemoteMgmtCallbackIfc* callback) = 0;
    /// False, and nothing changes, unless `callback` is the stored subscriber.
    virtual bool unsubscribeForRemoteProgress(RemoteMgmtCallbackIfc* callback) = 0;
};

}  // namespace vireo
