#pragma once

#include <functional>
#include <list>
#include <mutex>
#include <string>

#include "LocalMgmtIfc.h"

namespace vireo {

/// Keeps the links of the users' areas in step with the files that were deployed with the phone.
/// Directories end in "/" and are absolute or paths of the phone. Safe from every thread.
class DefaultLinks {
public:
    using SoftwareType = std::function<int()>;

    /// `directoryLock` is held while links are made and removed.
    DefaultLinks(std::mutex& directoryLock, SoftwareType softwareType);

    /// Brings the links of one directory up to date. Afterwards every default is a link or a file
    /// in `userDirectory`, or a link in `deletedDirectory`, and no link there leads to a default
    /// that is gone. What fails for one name has an error line and does not stop the others;
    /// a directory that cannot be read throws `StorageError`.
    void setupUserDefaults(const std::string& userDirectory, const std::string& defaultsDirectory,
                           const std::string& deletedDirectory, LocalMgmtIfc::eFiletype type);
    /// Links every file of `defaultsDirectory` into `userDirectory`. What is there already stays.
    /// Failures have an error line.
    void resetUserFileDefaults(const std::string& userDirectory,
                               const std::string& defaultsDirectory);
    /// The same with the links of `defaultsDirectory`, too.
    void resetUserFileDefaultsKSPMobility(const std::string& userDirectory,
                                          const std::string& defaultsDirectory);

private:
    struct Area;

    static void settle(const Area& area, const std::string& name);
    static void checkUserLinks(const Area& area);
    static void removeDanglingTombstones(const Area& area);
    void link(const std::list<std::string>& names, const std::string& userDirectory,
              const std::string& defaultsDirectory);

    std::mutex& m_directoryLock;
    const SoftwareType m_softwareType;
};

}  // namespace vireo
