#pragma once

#include <list>
#include <mutex>
#include <string>

#include "LocalMgmtIfc.h"
#include "files/FileValidator.h"
#include "sync/Semaphore.h"

namespace vireo {

class DefaultLinks;
struct AreaPaths;

/// Clears users' areas. Safe from every thread.
class AreaCleanup {
public:
    /// `links` outlives it; `directoryLock` is held while files are deleted.
    AreaCleanup(DefaultLinks& links, std::mutex& directoryLock,
                FileValidator::MobilitySource mobility);

    // As `UserFileAreas` has them.
    bool cleanupUserData(LocalMgmtIfc::eFiletype type, LocalMgmtIfc::eUsertype user,
                         bool notifyMobility, bool restoreAll);
    int resetUserFiles(LocalMgmtIfc::eUsertype user, bool notifyMobility, bool restoreAll);
    void emptyDeletedFolder(LocalMgmtIfc::eUsertype user);

private:
    void clearPicture();
    void clear(const std::string& directory);
    void remove(const std::list<std::string>& paths);
    void restore(LocalMgmtIfc::eFiletype type, LocalMgmtIfc::eUsertype user, bool restoreAll,
                 const AreaPaths& paths);

    DefaultLinks& m_links;
    std::mutex& m_directoryLock;
    const FileValidator::MobilitySource m_mobility;
    Semaphore m_storageSemaphore{1, 1};
};

}  // namespace vireo
