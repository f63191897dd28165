#pragma once

#include <mutex>
#include <string>

#include "LocalMgmtIfc.h"

namespace vireo {

/// The types of which the phone keeps one file.
class SingleFileTypes {
public:
    /// `directoryLock` is held while files are removed.
    explicit SingleFileTypes(std::mutex& directoryLock) : m_directoryLock(directoryLock) {}

    /// Removes what lies beside the file: other files are deleted; a link to a default file goes
    /// to the directory of deleted ones, where the type has defaults, else it is deleted, too. What
    /// cannot be removed stays, with an error line.
    void removeOldFileForSingleFileTypes(LocalMgmtIfc::eFiletype type, const std::string& path);

private:
    std::mutex& m_directoryLock;
};

}  // namespace vireo
