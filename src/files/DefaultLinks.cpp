#include "files/DefaultLinks.h"

#include <string_view>
#include <unordered_set>
#include <utility>

#include "Boundary.h"
#include "device/Storage.h"

namespace vireo {
namespace {

// Only here a link that leads nowhere, or elsewhere, is removed from the user's view.
constexpr int kChecksUserLinks = 1;

using Names = std::list<std::string>;
using NameSet = std::unordered_set<std::string_view>;

NameSet setOf(const Names& names) {
    return {names.begin(), names.end()};
}

/// Replaces what bears the name in the user's directory by a link to the default.
void replaceByLink(const std::string& userDirectory, const std::string& defaultsDirectory,
                   const std::string& name) {
    VCMS_LOG(kLogDebug,
             " - matching default and user file found %s, deleting user file and replacing with "
             "link to default",
             name.c_str());
    Storage::replaceBySymlink(defaultsDirectory + name, userDirectory + name);
}

}  // namespace

/// One directory of an area as it was found. The sets refer to the lists.
struct DefaultLinks::Area {
    Area(const std::string& userPath, const std::string& defaultsPath,
         const std::string& deletedPath)
        : userDirectory(userPath), defaultsDirectory(defaultsPath), deletedDirectory(deletedPath) {
        Storage::getListOfFilesByDirectory(defaultsDirectory, defaults, false);
        Storage::getListOfLinksByDirectory(deletedDirectory, tombstones, false);
        // Files and links in one go: a file must not be missed that becomes a link meanwhile.
        for (StorageEntry& entry : Storage::list(userDirectory)) {
            if (entry.kind == StorageEntry::eFile) {
                files.push_back(std::move(entry.name));
            } else if (entry.kind == StorageEntry::eLink) {
                links.push_back(std::move(entry.name));
            }
        }
        hasDefault = setOf(defaults);
        isTombstone = setOf(tombstones);
        isFile = setOf(files);
        isLink = setOf(links);
    }
    Area(const Area&) = delete;
    Area& operator=(const Area&) = delete;

    const std::string& userDirectory;
    const std::string& defaultsDirectory;
    const std::string& deletedDirectory;
    Names defaults;
    Names tombstones;
    Names files;
    Names links;
    NameSet hasDefault;
    NameSet isTombstone;
    NameSet isFile;
    NameSet isLink;
};

DefaultLinks::DefaultLinks(std::mutex& directoryLock, SoftwareType softwareType)
    : m_directoryLock(directoryLock), m_softwareType(std::move(softwareType)) {}

void DefaultLinks::setupUserDefaults(const std::string& userDirectory,
                                     const std::string& defaultsDirectory,
                                     const std::string& deletedDirectory,
                                     LocalMgmtIfc::eFiletype /*type*/) {
    VCMS_LOG(kLogDebug, "VireoClientMgmt::setupUserDefaults( )");
    const bool checksUserLinks = m_softwareType() == kChecksUserLinks;
    const std::lock_guard lock(m_directoryLock);
    const Area area(userDirectory, defaultsDirectory, deletedDirectory);
    for (const std::string& name : area.defaults) {
        guardedCall("setupUserDefaults", [&] { settle(area, name); });
    }
    if (checksUserLinks) {
        checkUserLinks(area);
    }
    removeDanglingTombstones(area);
}

/// Decides what a default is in the area: a link, a file of the user's, or deleted.
void DefaultLinks::settle(const Area& area, const std::string& name) {
    const bool isTombstone = area.isTombstone.contains(name);
    if (area.isLink.contains(name)) {
        if (isTombstone) {
            VCMS_LOG(kLogDebug,
                     " - link found in both user and deleted areas, delete duplicate from deleted "
                     "%s.\n",
                     area.deletedDirectory.c_str());
            Storage::deleteFile(area.deletedDirectory, name);
        }
    } else if (isTombstone) {
        return;  // the user deleted it
    } else if (area.isFile.contains(name)) {
        if (Storage::compareFiles(area.defaultsDirectory + name, area.userDirectory + name) == 0) {
            replaceByLink(area.userDirectory, area.defaultsDirectory, name);
        }
    } else {
        // Deliberate: a default that the area lacks counts as deleted by the user.
        VCMS_LOG(kLogDebug,
                 " - default file %s does not exist in user area, creating link in 'deleted' "
                 "directory",
                 name.c_str());
        Storage::createSymlink(area.defaultsDirectory + name, area.deletedDirectory + name);
    }
}

void DefaultLinks::checkUserLinks(const Area& area) {
    for (const std::string& name : area.links) {
        guardedCall("setupUserDefaults", [&] {
            if (!area.hasDefault.contains(name)) {
                VCMS_LOG(kLogDebug, "Dangling link found in user area, deleting");
                Storage::deleteSymlink(area.userDirectory, name);
            } else if (Storage::compareFiles(area.defaultsDirectory + name,
                                             area.userDirectory + name) != 0) {
                // Deliberate: the line speaks of a matching file, though they differ.
                replaceByLink(area.userDirectory, area.defaultsDirectory, name);
            }
        });
    }
}

void DefaultLinks::removeDanglingTombstones(const Area& area) {
    for (const std::string& name : area.tombstones) {
        if (!area.hasDefault.contains(name)) {
            VCMS_LOG(kLogDebug,
                     "VireoClientMgmt::setupUserDefaults( ) - Dangling link found in user "
                     "'deleted' area, deleting");
            guardedCall("setupUserDefaults",
                        [&] { Storage::deleteFile(area.deletedDirectory, name); });
        }
    }
}

void DefaultLinks::resetUserFileDefaults(const std::string& userDirectory,
                                         const std::string& defaultsDirectory) {
    guardedCall("resetUserFileDefaults", [&] {
        Names names;
        Storage::getListOfFilesByDirectory(defaultsDirectory, names, false);
        link(names, userDirectory, defaultsDirectory);
    });
}

void DefaultLinks::resetUserFileDefaultsKSPMobility(const std::string& userDirectory,
                                                    const std::string& defaultsDirectory) {
    VCMS_LOG(kLogDebug, "VireoClientMgmt::resetUserFileDefaultsKSPMobility()");
    guardedCall("resetUserFileDefaultsKSPMobility", [&] {
        Names names;
        Storage::getListOfFilesAndLinksByDirectory(defaultsDirectory, names, false);
        link(names, userDirectory, defaultsDirectory);
    });
}

void DefaultLinks::link(const std::list<std::string>& names, const std::string& userDirectory,
                        const std::string& defaultsDirectory) {
    const std::lock_guard lock(m_directoryLock);
    for (const std::string& name : names) {
        guardedCall("resetUserFileDefaults", [&] {
            Storage::createSymlink(defaultsDirectory + name, userDirectory + name);
        });
    }
}

}  // namespace vireo
