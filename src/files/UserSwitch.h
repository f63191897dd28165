#pragma once

#include <atomic>

#include "LocalMgmtIfc.h"

namespace vireo {

class AreaCleanup;
class FileMigration;

/// Whose files are meant when nobody is named, and what happens when that changes. Safe from every
/// thread.
class UserSwitch {
public:
    /// Both outlive it.
    UserSwitch(AreaCleanup& cleanup, FileMigration& migration)
        : m_cleanup(cleanup), m_migration(migration) {}

    LocalMgmtIfc::eUsertype currentUser() const { return m_current; }

    // As `UserFileAreas` has them.
    bool changeCurrentUser(LocalMgmtIfc::eUsertype user);
    bool clearMobileUserData();

private:
    void becomeBase();
    void becomeVisitor();
    void clearVisitor();
    void clearVisitorKsp();

    AreaCleanup& m_cleanup;
    FileMigration& m_migration;
    std::atomic<LocalMgmtIfc::eUsertype> m_current{LocalMgmtIfc::USER_UNSET};
};

}  // namespace vireo
