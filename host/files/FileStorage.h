#pragma once

#include <filesystem>
#include <string>

#include "device/DevicePorts.h"
#include "files/ConfinedRoot.h"

namespace vireo {

/// The phone's files on a real file system. Relative paths are relative to the storage root; the
/// other functions take every absolute path below the device root. No symbolic link to a directory
/// is followed, so that nothing outside is listed, changed or removed. Changes of directories are
/// on stable storage when a function returns.
class FileStorage : public StoragePort {
public:
    /// `storageRoot` is relative to the device root. It is made when it is needed first.
    FileStorage(const std::filesystem::path& deviceRoot, const std::string& storageRoot);

    void initStorageLocation(std::string& path) override;
    std::uint64_t fileSize(const std::string& fullPath) override;
    void deleteFile(const std::string& fullPath) override;
    std::vector<StorageEntry> list(const std::string& directory) override;
    void move(const std::string& fromPath, const std::string& toPath) override;

private:
    ConfinedRoot m_device;
    ConfinedRoot m_storage;  ///< for its path alone
};

}  // namespace vireo
