#include "items/OwnItemWrites.h"

#include "LogMacros.h"
#include "data/ManageableData.h"
#include "items/ItemRecords.h"
#include "items/OwnItems.h"

namespace vireo {

bool OwnItemWrites::change(OwnItemKind kind, const std::string& rootId) {
    std::string value;
    m_record.interogate(rootId, rootId, value);
    switch (kind) {
        case OwnItemKind::eLockDown:
            return changeLock(rootId, value);
        case OwnItemKind::eFileRequest:
            return changeFileRequest(rootId, value);
        default:
            warnOfMemory(value);
            return true;
    }
}

bool OwnItemWrites::changeLock(const std::string& rootId, const std::string& value) {
    if (!m_items.changeLockedDown(rootId, value)) {
        ItemRecords::refuse(m_record, rootId, "Unknown");
        return false;
    }
    m_hasChangedLock = true;
    return true;
}

bool OwnItemWrites::changeFileRequest(const std::string& rootId, const std::string& value) {
    m_hasFileRequest = true;
    std::string reason;
    if (m_items.changeFileRequest(rootId, value, reason)) {
        return true;
    }
    VCMS_LOG(kLogDebug, "*** changeFileManagerCache failed %s", reason.c_str());
    ItemRecords::refuse(m_record, rootId, reason);
    return false;
}

void OwnItemWrites::warnOfMemory(const std::string& value) {
    if (value == "1" && m_items.warnRemoteSubscriber(RemoteMgmtCallbackIfc::eRebootLackOfMemory)) {
        VCMS_LOG(kLogDump,
                 "InformRemoteProgress:Notify user about the reboot due to the memory lack.");
    } else if (value == "2" &&
               m_items.warnRemoteSubscriber(RemoteMgmtCallbackIfc::eMemoryThresholdExceeded)) {
        VCMS_LOG(kLogDump,
                 "InformRemoteProgress:Notify user about the memory threshold is exceeded. "
                 "Warn the user about Less Memory.");
    }
}

bool OwnItemWrites::flush() {
    if (m_hasChangedLock) {
        m_items.flushLockedDown();
    }
    return !m_hasFileRequest || flushFileRequests();
}

bool OwnItemWrites::flushFileRequests() {
    FileRequestStatuses statuses;
    const bool result = m_items.flushFileRequests(statuses);
    for (const auto& [index, each] : statuses) {
        if (each.status == fileData::eFailed) {
            VCMS_LOG(kLogDebug,
                     "file request status reported, adding status reason to: %s   where failure "
                     "is: %s",
                     each.itemName.c_str(), each.failureText.c_str());
            ItemRecords::refuse(m_record, each.itemName, each.failureText);
        } else if (each.status == fileData::eInitiated) {
            VCMS_LOG(kLogDebug,
                     "file request status reported, adding status reason to: %s   where status "
                     "is: initiated",
                     each.itemName.c_str());
            ItemRecords::refuse(m_record, each.itemName, RejectReasonsStrings::initiated);
        }
    }
    return result;
}

}  // namespace vireo
