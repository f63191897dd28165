#include "device/Storage.h"

#include "Ports.h"
#include "device/DevicePorts.h"

namespace vireo {
namespace {

StoragePort& port() {
    StoragePort* const storage = installedPorts().storage;
    if (storage == nullptr) {
        throw StorageError("there is no storage");
    }
    return *storage;
}

std::vector<StorageEntry> listIfThere(const std::string& directory) {
    try {
        return port().list(directory);
    } catch (const MissingDirectoryError&) {
        return {};
    }
}

template <class IsWanted>
void select(const std::string& directory, std::list<std::string>& names, bool fullPaths,
            IsWanted isWanted) {
    names.clear();
    for (StorageEntry& entry : listIfThere(directory)) {
        if (isWanted(entry.kind)) {
            names.push_back(fullPaths ? directory + entry.name : std::move(entry.name));
        }
    }
}

}  // namespace

void Storage::initStorageLocation(std::string& path, int /*storageType*/, bool /*isShared*/) {
    port().initStorageLocation(path);
}

std::vector<StorageEntry> Storage::list(const std::string& directory) {
    return port().list(directory);
}

void Storage::getListOfFilesByDirectory(const std::string& directory, std::list<std::string>& names,
                                        bool fullPaths) {
    select(directory, names, fullPaths,
           [](StorageEntry::eKind kind) { return kind == StorageEntry::eFile; });
}

void Storage::getListOfLinksByDirectory(const std::string& directory, std::list<std::string>& names,
                                        bool fullPaths) {
    select(directory, names, fullPaths,
           [](StorageEntry::eKind kind) { return kind == StorageEntry::eLink; });
}

void Storage::getListOfFilesAndLinksByDirectory(const std::string& directory,
                                                std::list<std::string>& names, bool fullPaths) {
    select(directory, names, fullPaths, [](StorageEntry::eKind kind) {
        return kind == StorageEntry::eFile || kind == StorageEntry::eLink;
    });
}

void Storage::getListOfDirectoriesByDirectory(const std::string& directory,
                                              std::list<std::string>& names) {
    select(directory, names, false,
           [](StorageEntry::eKind kind) { return kind == StorageEntry::eDirectory; });
}

std::uint64_t Storage::fileSize(const std::string& fullPath) {
    return port().fileSize(fullPath);
}

int Storage::compareFiles(const std::string& onePath, const std::string& otherPath) {
    return port().compareFiles(onePath, otherPath);
}

void Storage::deleteFile(const std::string& fullPath) {
    port().deleteFile(fullPath);
}

void Storage::deleteFile(const std::string& directory, const std::string& name) {
    port().deleteFile(directory + name);
}

void Storage::renameFile(const std::string& fromPath, const std::string& toPath) {
    port().renameFile(fromPath, toPath);
}

void Storage::renameSymlink(const std::string& fromPath, const std::string& toPath) {
    port().renameSymlink(fromPath, toPath);
}

void Storage::createSymlink(const std::string& targetPath, const std::string& linkPath) {
    port().createSymlink(targetPath, linkPath);
}

void Storage::replaceBySymlink(const std::string& targetPath, const std::string& linkPath) {
    port().replaceBySymlink(targetPath, linkPath);
}

void Storage::deleteSymlink(const std::string& directory, const std::string& name) {
    port().deleteSymlink(directory + name);
}

void Storage::copyFile(const std::string& fromPath, const std::string& toPath) {
    port().copyFile(fromPath, toPath);
}

void Storage::getStorageName(std::string& id, std::string& displayName) {
    port().getStorageName(id, displayName);
}

StorageSpace Storage::space() {
    return port().space();
}

}  // namespace vireo
