#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Visibility.h"
#include "device/StorageError.h"

namespace vireo {

/// One name of a directory.
struct StorageEntry {
    enum eKind { eFile, eLink, eDirectory, eOther };

    std::string name;
    eKind kind = eOther;
};

/// The phone's files. Forwards to the installed `StoragePort`. Safe from every thread. What fails
/// throws `StorageError`, and so does everything without a port.
class VIREO_API Storage {
public:
    /// Makes a path absolute, in place; an absolute one below the storage root stays. A path that
    /// ends in "/", or is empty, is a directory and is made, with its parents; of another the
    /// parents are made. Any other absolute path, ".." and NUL bytes are refused. Both storage
    /// types have the same root; `isShared` has no meaning on a phone of one process.
    static void initStorageLocation(std::string& path, int storageType, bool isShared);
    /// Bytes of a file; what a link points to counts.
    static std::uint64_t fileSize(const std::string& fullPath);
    /// Removes a file or a link, not what it points to.
    static void deleteFile(const std::string& fullPath);
    /// What is in the directory, sorted by name. Hidden names, which begin with ".", are left out:
    /// such a file is still being received.
    static std::vector<StorageEntry> list(const std::string& directory);
    /// Gives a file or a link another name, in one step, in the place of what bears it. The
    /// directory of the new name is made, with its parents.
    static void move(const std::string& fromPath, const std::string& toPath);
};

}  // namespace vireo
