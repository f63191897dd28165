#include "service/OwnItemManagers.h"

#include "data/RejectionSpec.h"
#include "device/RemoteSubscriber.h"
#include "files/FileManager.h"
#include "items/LockDownMgr.h"

namespace vireo {

OwnItemManagers::OwnItemManagers(PhoneBusyState& busyState, RemoteSubscriber& subscriber)
    : m_busyState(busyState), m_subscriber(subscriber) {}

OwnItemManagers::~OwnItemManagers() = default;

void OwnItemManagers::startLockDown(LocalMgmtIfc& service, SvcRTEContext& context) {
    m_lockDown = std::make_unique<LockDownMgr>(service, context);
}

void OwnItemManagers::startFileDeployment(LocalMgmtIfc& service) {
    m_files = std::make_unique<FileManager>(service);
}

void OwnItemManagers::fileDownloadTimeout() {
    if (m_files) {
        m_files->fileDownloadTimeout();
    }
}

bool OwnItemManagers::readLockedDown(const std::string& rootId, std::string& value) {
    return m_lockDown && m_lockDown->readLockedDownCache(rootId, value);
}

bool OwnItemManagers::changeLockedDown(const std::string& rootId, const std::string& value) {
    return m_lockDown && m_lockDown->changeLockedDownCache(rootId, value);
}

bool OwnItemManagers::flushLockedDown() {
    return m_lockDown && m_lockDown->flushToDAS();
}

bool OwnItemManagers::readFileRequest(const std::string& rootId, std::string& value) {
    return m_files && m_files->readFileManagerCache(rootId, value);
}

bool OwnItemManagers::changeFileRequest(const std::string& rootId, const std::string& value,
                                        std::string& reason) {
    if (!m_files) {
        reason = RejectReasonsStrings::request_failed;
        return false;
    }
    return m_files->changeFileManagerCache(rootId, value, reason);
}

bool OwnItemManagers::flushFileRequests(FileRequestStatuses& statuses) {
    return m_files && m_files->flushToCache(statuses);
}

unsigned OwnItemManagers::phoneBusyStatus() {
    return m_busyState.mask();
}

bool OwnItemManagers::warnRemoteSubscriber(RemoteMgmtCallbackIfc::eRemoteOperationType type) {
    return m_subscriber.warn(type);
}

}  // namespace vireo
