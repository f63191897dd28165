#include "files/FileMigration.h"

#include <list>
#include <string>

#include "Boundary.h"
#include "device/Storage.h"

namespace vireo {
namespace {

using Ifc = LocalMgmtIfc;

constexpr Ifc::eFiletype kMigratedTypes[] = {Ifc::FILETYPE_PICTURE,  Ifc::FILETYPE_SCREENSAVER,
                                             Ifc::FILETYPE_LDAP,     Ifc::FILETYPE_RINGER,
                                             Ifc::FILETYPE_JAD,      Ifc::FILETYPE_PHD,
                                             Ifc::FILETYPE_VR_AUDIO, Ifc::FILETYPE_VR_PATTERN};

}  // namespace

bool FileMigration::migrateFileSpace(Ifc::eUsertype /*from*/, Ifc::eUsertype to) {
    for (const Ifc::eFiletype type : kMigratedTypes) {
        guardedCall("migrateFileSpace", [&] { migrate(type, to); });
    }
    return true;
}

void FileMigration::migrate(Ifc::eFiletype type, Ifc::eUsertype to) {
    std::list<std::string> files;
    // Deliberate: they are the current user's, whoever they are to be taken from.
    if (!m_items.getListOfFilesOfType(type, &files) || files.empty()) {
        return;
    }
    std::string directory;
    if (!m_items.getFilePathFromType(type, directory, to)) {
        return;
    }
    Storage::initStorageLocation(directory, 0, false);
    for (const std::string& file : files) {
        const std::lock_guard lock(m_directoryLock);
        guardedCall("copyFile",
                    [&] { Storage::copyFile(file, directory + file.substr(file.rfind('/') + 1)); });
    }
}

}  // namespace vireo
