#pragma once

#include <string>

#include "Visibility.h"

namespace vireo {

/// What a client implements that starts a download and wants to hear of it. Called on the thread on
/// which the transfer reports, without a lock held; it may call back into the service.
class VIREO_API LocalMgmtCallbackIfc {
public:
    virtual ~LocalMgmtCallbackIfc() = default;
    /// Whether the phone may be shut down now.
    virtual bool requestShutdown() = 0;
    /// `progress` is 0 to 100 percent of the file that will be at `filepath`, or negative when the
    /// download has failed. The answer says whether it could be delivered.
    virtual bool informDownloadProgress(int progress, std::string filepath) = 0;
    /// The file is complete, in its place and accepted.
    virtual bool informDownloadCompletion(std::string filepath) = 0;
};

}  // namespace vireo
