#include "files/AreaCleanup.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Boundary.h"
#include "SemaphoreGuard.h"
#include "device/GPALAdmin.h"
#include "device/Storage.h"
#include "files/AreaPaths.h"
#include "files/DefaultLinks.h"
#include "files/FileTypeCatalogue.h"
#include "services/MobilityServiceIfc.h"

namespace vireo {
namespace {

using Ifc = LocalMgmtIfc;

constexpr Ifc::eFiletype kCleanedTypes[] = {Ifc::FILETYPE_PICTURE, Ifc::FILETYPE_SCREENSAVER,
                                            Ifc::FILETYPE_RINGER, Ifc::FILETYPE_JAD,
                                            Ifc::FILETYPE_PHD};

bool isCleaned(Ifc::eFiletype type) {
    return std::find(std::begin(kCleanedTypes), std::end(kCleanedTypes), type) !=
           std::end(kCleanedTypes);
}

}  // namespace

AreaCleanup::AreaCleanup(DefaultLinks& links, std::mutex& directoryLock,
                         FileValidator::MobilitySource mobility)
    : m_links(links), m_directoryLock(directoryLock), m_mobility(std::move(mobility)) {}

bool AreaCleanup::cleanupUserData(Ifc::eFiletype type, Ifc::eUsertype user, bool notifyMobility,
                                  bool restoreAll) {
    if (!isCleaned(type)) {
        VCMS_LOG(kLogError, "File type %d unsupported", static_cast<int>(type));
        return false;
    }
    if (type == Ifc::FILETYPE_PICTURE && notifyMobility) {
        clearPicture();
    }
    AreaPaths paths(type, user);
    paths.enter(type);
    VCMS_LOG(kLogDebug, "CleanupUserData - user type = %d, file type = %d, and directory = %s",
             static_cast<int>(user), static_cast<int>(type), paths.user.c_str());
    guardedCall("cleanupUserData", [&] {
        paths.initialise();
        clear(paths.user);
        restore(type, user, restoreAll, paths);
    });
    return true;
}

void AreaCleanup::clearPicture() {
    if (MobilityServiceIfc* const mobility = m_mobility()) {
        guardedCall("pictureDeleted", [&] { mobility->pictureDeleted({}); });
    }
}

void AreaCleanup::clear(const std::string& directory) {
    // A file that is still on its way belongs to what is cleared.
    GPALAdmin::discardFiles(directory);
    std::list<std::string> paths;
    {
        const SemaphoreGuard guard(m_storageSemaphore);
        Storage::getListOfFilesAndLinksByDirectory(directory, paths, true);
        paths.sort();
    }
    remove(paths);
}

/// One that cannot be removed does not keep the others.
void AreaCleanup::remove(const std::list<std::string>& paths) {
    const std::lock_guard lock(m_directoryLock);
    for (const std::string& path : paths) {
        guardedCall("deleteFile", [&] { Storage::deleteFile(path); });
    }
}

/// Makes the links of a directory that was cleared.
void AreaCleanup::restore(Ifc::eFiletype type, Ifc::eUsertype user, bool restoreAll,
                          const AreaPaths& paths) {
    if (user == Ifc::USER_VISITOR_KSP) {
        if (type != Ifc::FILETYPE_PICTURE) {
            // This visitor sees what the phone's own user has.
            std::string own(FileTypeCatalogue::row(type).directory);
            Storage::initStorageLocation(own, 0, false);
            m_links.resetUserFileDefaultsKSPMobility(paths.user, own);
        }
        return;
    }
    // Deliberate: a visitor gets the default screensavers and ringers by `restoreAll` alone.
    if (user == Ifc::USER_VISITOR && !restoreAll &&
        (type == Ifc::FILETYPE_SCREENSAVER || type == Ifc::FILETYPE_RINGER)) {
        return;
    }
    m_links.resetUserFileDefaults(paths.user, paths.defaults);
}

int AreaCleanup::resetUserFiles(Ifc::eUsertype user, bool notifyMobility, bool restoreAll) {
    for (const Ifc::eFiletype type :
         {Ifc::FILETYPE_PICTURE, Ifc::FILETYPE_SCREENSAVER, Ifc::FILETYPE_RINGER}) {
        cleanupUserData(type, user, notifyMobility, restoreAll);
    }
    if (user == Ifc::USER_VISITOR && !restoreAll) {
        cleanupUserData(Ifc::FILETYPE_JAD, user, false, false);
        cleanupUserData(Ifc::FILETYPE_PHD, user, false, false);
    }
    return 0;
}

void AreaCleanup::emptyDeletedFolder(Ifc::eUsertype user) {
    guardedCall("emptyDeletedFolder", [&] {
        const bool isVisitor = user == Ifc::USER_VISITOR || user == Ifc::USER_VISITOR_KSP;
        std::string folder = std::string(isVisitor ? "visitor/" : "") + AreaPaths::kDeleted;
        Storage::initStorageLocation(folder, 0, false);
        std::list<std::string> directories;
        Storage::getListOfDirectoriesByDirectory(folder, directories);
        directories.sort();
        for (const std::string& directory : directories) {
            std::list<std::string> paths;
            Storage::getListOfFilesAndLinksByDirectory(folder + directory + '/', paths, true);
            const std::lock_guard lock(m_directoryLock);
            for (const std::string& path : paths) {
                Storage::deleteFile(path);
            }
        }
    });
}

}  // namespace vireo
