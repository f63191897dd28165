#pragma once

#include <memory>

#include "files/PhoneBusyState.h"
#include "items/OwnItems.h"

namespace vireo {

class FileManager;
class LocalMgmtIfc;
class LockDownMgr;
class RemoteSubscriber;
class SvcRTEContext;

/// Leads the item paths to the managers behind the service's own items. A start-up that stopped
/// early leaves managers out; what needs one answers failure then.
class OwnItemManagers : public OwnItems {
public:
    OwnItemManagers(PhoneBusyState& busyState, RemoteSubscriber& subscriber);
    ~OwnItemManagers() override;

    /// Creates the lock-down manager.
    void startLockDown(LocalMgmtIfc& service, SvcRTEContext& context);
    /// Creates the file deployment manager.
    void startFileDeployment(LocalMgmtIfc& service);

    /// A file deployment took too long.
    void fileDownloadTimeout();

    bool readLockedDown(const std::string& rootId, std::string& value) override;
    bool changeLockedDown(const std::string& rootId, const std::string& value) override;
    bool flushLockedDown() override;
    bool readFileRequest(const std::string& rootId, std::string& value) override;
    bool changeFileRequest(const std::string& rootId, const std::string& value,
                           std::string& reason) override;
    bool flushFileRequests(FileRequestStatuses& statuses) override;
    unsigned phoneBusyStatus() override;
    bool warnRemoteSubscriber(RemoteMgmtCallbackIfc::eRemoteOperationType type) override;

private:
    PhoneBusyState& m_busyState;
    RemoteSubscriber& m_subscriber;
    std::unique_ptr<LockDownMgr> m_lockDown;
    std::unique_ptr<FileManager> m_files;
};

}  // namespace vireo
