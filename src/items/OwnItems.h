#pragma once

#include <map>
#include <string>

#include "RemoteMgmtCallbackIfc.h"

namespace vireo {

/// What became of one file request.
struct fileData {
    enum Status { eFailed = 1, eInitiated = 2 };

    int status = 0;  ///< other values report nothing
    std::string itemName;
    std::string failureText;
};

/// What is to be reported, by the index of the request.
using FileRequestStatuses = std::map<unsigned int, fileData>;

/// The service's own managers behind items that are not plain settings, as the item paths see them.
/// Every call answers failure while the manager does not exist. Safe from every thread.
class OwnItems {
public:
    virtual ~OwnItems() = default;

    virtual bool readLockedDown(const std::string& rootId, std::string& value) = 0;
    virtual bool changeLockedDown(const std::string& rootId, const std::string& value) = 0;
    virtual bool flushLockedDown() = 0;

    virtual bool readFileRequest(const std::string& rootId, std::string& value) = 0;
    /// On failure `reason` says why.
    virtual bool changeFileRequest(const std::string& rootId, const std::string& value,
                                   std::string& reason) = 0;
    /// Carries out what was changed.
    virtual bool flushFileRequests(FileRequestStatuses& statuses) = 0;

    /// The mask of reasons why the phone is busy; 0 when it is idle.
    virtual unsigned phoneBusyStatus() = 0;
    /// Warns the remote management subscriber; false when there is none.
    virtual bool warnRemoteSubscriber(RemoteMgmtCallbackIfc::eRemoteOperationType type) = 0;
};

}  // namespace vireo
