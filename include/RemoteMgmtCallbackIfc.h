#pragma once

#include "Visibility.h"

namespace vireo {

/// What a remote management client implements to be told of long-running work.
class VIREO_API RemoteMgmtCallbackIfc {
public:
    /// What the remote client asked for; other values are its own.
    enum eRemoteOperationType : int {
        eNoRemoteRequest = 0,  ///< somebody else started the work
        eRebootLackOfMemory = 3,
        eMemoryThresholdExceeded = 4,
    };

    virtual ~RemoteMgmtCallbackIfc() = default;
    /// `progress` is 0 to 100 percent, or -3 when the work failed.
    virtual void informRemoteProgress(int progress, eRemoteOperationType type) = 0;
    virtual void informRemoteWarning(eRemoteOperationType type) = 0;
};

}  // namespace vireo
