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

}  // namespace

void Storage::initStorageLocation(std::string& path, int /*storageType*/, bool /*isShared*/) {
    port().initStorageLocation(path);
}

std::uint64_t Storage::fileSize(const std::string& fullPath) {
    return port().fileSize(fullPath);
}

void Storage::deleteFile(const std::string& fullPath) {
    port().deleteFile(fullPath);
}

std::vector<StorageEntry> Storage::list(const std::string& directory) {
    return port().list(directory);
}

void Storage::move(const std::string& fromPath, const std::string& toPath) {
    port().move(fromPath, toPath);
}

}  // namespace vireo
