#include "files/SingleFileTypes.h"

#include <string_view>

#include "Boundary.h"
#include "device/Storage.h"
#include "files/FileTypeCatalogue.h"

namespace vireo {
namespace {

/// Where the link to a default file goes that the user has no more: the user's area, "deleted/",
/// the type's directory.
std::string deletedPath(const std::string& directory, LocalMgmtIfc::eFiletype type,
                        const std::string& name) {
    const std::string_view own = FileTypeCatalogue::row(type).directory;
    std::string path = directory.substr(0, directory.size() - own.size());
    return path.append("deleted/").append(own).append(name);
}

void remove(const StorageEntry& entry, const std::string& directory, LocalMgmtIfc::eFiletype type) {
    if (entry.kind == StorageEntry::eLink && FileTypeCatalogue::row(type).hasDefaults) {
        Storage::renameFile(directory + entry.name, deletedPath(directory, type, entry.name));
    } else if (entry.kind == StorageEntry::eLink || entry.kind == StorageEntry::eFile) {
        Storage::deleteFile(directory + entry.name);
    }
}

}  // namespace

void SingleFileTypes::removeOldFileForSingleFileTypes(LocalMgmtIfc::eFiletype type,
                                                      const std::string& path) {
    guardedCall("removeOldFileForSingleFileTypes", [&] {
        const std::size_t nameStart = path.rfind('/') + 1;
        const std::string directory = path.substr(0, nameStart);
        const std::string_view name = std::string_view(path).substr(nameStart);
        const std::lock_guard lock(m_directoryLock);
        for (const StorageEntry& entry : Storage::list(directory)) {
            if (entry.name != name) {
                guardedCall("removeOldFileForSingleFileTypes",
                            [&] { remove(entry, directory, type); });
            }
        }
    });
}

}  // namespace vireo
