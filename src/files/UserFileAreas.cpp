#include "files/UserFileAreas.h"

#include <algorithm>
#include <utility>

#include "Boundary.h"
#include "device/Storage.h"
#include "files/AreaPaths.h"
#include "files/FileTypeCatalogue.h"
#include "services/MobilityServiceIfc.h"

namespace vireo {
namespace {

using Ifc = LocalMgmtIfc;

constexpr int kFileStorage = 0;
constexpr int kSoftwareStorage = 1;
constexpr int kLastDeletableType = 12;

bool hasOwnDirectoryWhenDeleting(Ifc::eFiletype type) {
    return static_cast<unsigned>(type) <= kLastDeletableType;
}

}  // namespace

UserFileAreas::UserFileAreas(Surroundings surroundings)
    : m_surroundings(std::move(surroundings)),
      m_links(m_directoryLock, m_surroundings.softwareType),
      m_ringerGuard(m_surroundings.items),
      m_cleanup(m_links, m_directoryLock, m_surroundings.mobility),
      m_migration(m_surroundings.items, m_directoryLock),
      m_switch(m_cleanup, m_migration) {}

bool UserFileAreas::getListOfFilesOfType(Ifc::eFiletype type, std::list<std::string>* files,
                                         Ifc::eUsertype user) {
    VCMS_LOG(kLogDebug, "VireoClientMgmt::getListOfFilesOfType");
    files->clear();
    const FileTypeRow& row = FileTypeCatalogue::row(type);
    if (!row.isSupported) {
        VCMS_LOG(kLogError, "File type %d unsupported", static_cast<int>(type));
        return false;
    }
    AreaPaths paths(type, user);
    paths.enter(type);
    Storage::initStorageLocation(
        paths.user, type == Ifc::FILETYPE_SOFTWARE ? kSoftwareStorage : kFileStorage, false);
    if (row.hasDefaults) {
        guardedCall("setupUserDefaults", [&] {
            Storage::initStorageLocation(paths.deleted, kFileStorage, false);
            m_links.setupUserDefaults(paths.user, paths.defaults, paths.deleted, type);
        });
    }
    guardedCall("getListOfFilesOfType", [&] {
        Storage::getListOfFilesAndLinksByDirectory(paths.user, *files, true);
        files->sort();
    });
    return true;
}

bool UserFileAreas::deleteFileForUserType(Ifc::eFiletype type, const std::string& name,
                                          bool notifyMobility) {
    if (!FileValidator::isFileName(name)) {
        VCMS_LOG(kLogError, "deleteFile: \"%s\" is no file name", name.c_str());
        return false;
    }
    AreaPaths paths(type, currentUser());
    VCMS_LOG(kLogDebug, "DeleteFile - fileType = %d, filename = %s, path = %s",
             static_cast<int>(type), name.c_str(), paths.user.c_str());
    if (hasOwnDirectoryWhenDeleting(type)) {
        paths.enter(type);
    } else {
        // Deliberate: it goes on, in the user's directory above those of the types.
        VCMS_LOG(kLogWarning, "No deletion for file type %i!", static_cast<int>(type));
    }
    if (type == Ifc::FILETYPE_RINGER && !m_ringerGuard.allowsDeletion(name)) {
        return false;
    }
    paths.initialise();
    if (!removeOrBury(name, paths) && type == Ifc::FILETYPE_PICTURE && notifyMobility) {
        if (MobilityServiceIfc* const mobility = m_surroundings.mobility()) {
            guardedCall("pictureDeleted", [&] { mobility->pictureDeleted(name); });
        }
    }
    return true;
}

/// Deletes a file; a link is moved to the deleted ones, and the answer is true then.
bool UserFileAreas::removeOrBury(const std::string& name, const AreaPaths& paths) {
    const std::lock_guard lock(m_directoryLock);
    std::list<std::string> links;
    Storage::getListOfLinksByDirectory(paths.user, links, false);
    const bool isLink = std::find(links.begin(), links.end(), name) != links.end();
    if (isLink) {
        // What was received under the name meanwhile is the user's, and not what is deleted.
        Storage::renameSymlink(paths.user + name, paths.deleted + name);
    } else {
        Storage::deleteFile(paths.user, name);
    }
    return isLink;
}

bool UserFileAreas::cleanupUserData(Ifc::eFiletype type, Ifc::eUsertype user, bool notifyMobility,
                                    bool restoreAll) {
    return m_cleanup.cleanupUserData(type, user, notifyMobility, restoreAll);
}

int UserFileAreas::resetUserFiles(Ifc::eUsertype user, bool notifyMobility, bool restoreAll) {
    return m_cleanup.resetUserFiles(user, notifyMobility, restoreAll);
}

int UserFileAreas::resetUserFiles(Ifc::eUsertype user, bool notifyMobility) {
    return resetUserFiles(user, notifyMobility, false);
}

int UserFileAreas::resetUserFiles() {
    return resetUserFiles(currentUser(), true, false);
}

void UserFileAreas::emptyDeletedFolder(Ifc::eUsertype user) {
    m_cleanup.emptyDeletedFolder(user);
}

void UserFileAreas::resetUserFileDefaults(const std::string& userDirectory,
                                          const std::string& defaultsDirectory) {
    m_links.resetUserFileDefaults(userDirectory, defaultsDirectory);
}

bool UserFileAreas::changeCurrentUser(Ifc::eUsertype user) {
    return m_switch.changeCurrentUser(user);
}

bool UserFileAreas::clearMobileUserData() {
    return m_switch.clearMobileUserData();
}

bool UserFileAreas::migrateFileSpace(Ifc::eUsertype from, Ifc::eUsertype to) {
    return m_migration.migrateFileSpace(from, to);
}

}  // namespace vireo
