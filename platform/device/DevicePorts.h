#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Visibility.h"
#include "device/Storage.h"
#include "device/TransferRequest.h"

namespace vireo {

class AdminProgressCallback;

/// The real part behind `Storage`; the contracts are there. What fails throws `StorageError`.
class VIREO_API StoragePort {
public:
    virtual ~StoragePort() = default;
    virtual void initStorageLocation(std::string& path) = 0;
    virtual std::uint64_t fileSize(const std::string& fullPath) = 0;
    virtual int compareFiles(const std::string& onePath, const std::string& otherPath) = 0;
    virtual void deleteFile(const std::string& fullPath) = 0;
    /// Throws `MissingDirectoryError` when the directory is not there.
    virtual std::vector<StorageEntry> list(const std::string& directory) = 0;
    virtual void renameFile(const std::string& fromPath, const std::string& toPath) = 0;
    virtual void renameSymlink(const std::string& fromPath, const std::string& toPath) = 0;
    virtual void createSymlink(const std::string& targetPath, const std::string& linkPath) = 0;
    virtual void replaceBySymlink(const std::string& targetPath, const std::string& linkPath) = 0;
    virtual void deleteSymlink(const std::string& linkPath) = 0;
    virtual void copyFile(const std::string& fromPath, const std::string& toPath) = 0;
    virtual void getStorageName(std::string& id, std::string& displayName) = 0;
    virtual StorageSpace space() = 0;
};

/// The real part behind the transfers of `GPALAdmin`. Throws nothing.
class VIREO_API TransferPort {
public:
    virtual ~TransferPort() = default;
    virtual void setSecurityDetails(const SecurityDetails& details) = 0;
    /// False with a one-line `error` that names what is wrong.
    virtual bool getFile(const TransferRequest& request, AdminProgressCallback& progress,
                         std::string& error) = 0;
    virtual bool isActive() = 0;
    virtual void discard(const std::string& directory) = 0;
};

/// The real part behind the software images of `GPALAdmin`. Throws nothing.
class VIREO_API ImagePort {
public:
    virtual ~ImagePort() = default;
    virtual std::string hardwareVariant() = 0;
    /// False with a one-line `error` that names what is wrong.
    virtual bool verify(const std::string& path, const std::string& hardwareVariant,
                        std::string& error) = 0;
    virtual bool burn(const std::string& path, AdminProgressCallback& progress,
                      std::string& error) = 0;
    virtual bool isActive() = 0;
};

/// The real part behind `PlatformShell`. Throws nothing.
class VIREO_API ShellPort {
public:
    virtual ~ShellPort() = default;
    /// -1 with a one-line `error` that names what is wrong.
    virtual int run(const std::string& command, std::string& error) = 0;
};

/// The real part behind the reboot of `GPALAdmin`. Throws nothing.
class VIREO_API RebootPort {
public:
    virtual ~RebootPort() = default;
    /// False with a one-line `error` that names what is wrong.
    virtual bool reboot(std::string& error) = 0;
};

}  // namespace vireo
