#pragma once

#include <filesystem>
#include <string>

#include "device/DevicePorts.h"
#include "files/ConfinedRoot.h"

namespace vireo {

struct FilePlace;

/// The phone's files on a real file system. `initStorageLocation` takes what lies below the storage
/// root alone; the other functions take every full path below the device root. No symbolic link to
/// a directory is followed, so that nothing outside is listed, changed or removed. Links are
/// written with the whole path of their target.
class FileStorage : public StoragePort {
public:
    /// `storageRoot` is relative to the device root. It is made when it is needed first.
    FileStorage(const std::filesystem::path& deviceRoot, const std::string& storageRoot);

    void initStorageLocation(std::string& path) override;
    std::uint64_t fileSize(const std::string& fullPath) override;
    int compareFiles(const std::string& onePath, const std::string& otherPath) override;
    void deleteFile(const std::string& fullPath) override;
    std::vector<StorageEntry> list(const std::string& directory) override;
    void renameFile(const std::string& fromPath, const std::string& toPath) override;
    void renameSymlink(const std::string& fromPath, const std::string& toPath) override;
    void createSymlink(const std::string& targetPath, const std::string& linkPath) override;
    void replaceBySymlink(const std::string& targetPath, const std::string& linkPath) override;
    void deleteSymlink(const std::string& linkPath) override;
    void copyFile(const std::string& fromPath, const std::string& toPath) override;
    void getStorageName(std::string& id, std::string& displayName) override;
    StorageSpace space() override;

private:
    void move(const FilePlace& from, const std::string& fromPath, const std::string& toPath) const;

    ConfinedRoot m_device;
    ConfinedRoot m_storage;  ///< for its path alone
};

}  // namespace vireo
