#pragma once

#include <mutex>

#include "LocalMgmtIfc.h"

namespace vireo {

/// Takes a user's files along to another user. Safe from every thread.
class FileMigration {
public:
    /// `items` outlives it; `directoryLock` is held while a file is copied.
    FileMigration(LocalMgmtIfc& items, std::mutex& directoryLock)
        : m_items(items), m_directoryLock(directoryLock) {}

    /// As `UserFileAreas` has it.
    bool migrateFileSpace(LocalMgmtIfc::eUsertype from, LocalMgmtIfc::eUsertype to);

private:
    void migrate(LocalMgmtIfc::eFiletype type, LocalMgmtIfc::eUsertype to);

    LocalMgmtIfc& m_items;
    std::mutex& m_directoryLock;
};

}  // namespace vireo
