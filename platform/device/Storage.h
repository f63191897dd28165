#pragma once

#include <cstdint>
#include <list>
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

/// How much room there is, in bytes.
struct StorageSpace {
    std::uint64_t total = 0;
    std::uint64_t free = 0;  ///< that this process may still write
};

/// The phone's files. Forwards to the installed `StoragePort`. Safe from every thread. What fails
/// throws `StorageError`, and so does everything without a port; nothing is lost then.
///
/// Full paths are absolute: one below the device root is meant as it is, and any other is a path of
/// the phone, such as "/Vireo_Deploy/music/", and means the place of that path below the device
/// root. Nothing outside is read or changed, whatever links there are: a link to a directory is not
/// followed, one to a file only where its contents are wanted, and not out of the device root.
/// What was changed is on stable storage when a function returns.
class VIREO_API Storage {
public:
    /// Makes a path absolute, in place; an absolute one below the storage root stays. A path that
    /// ends in "/", or is empty, is a directory and is made, with its parents; of another the
    /// parents are made. Any other absolute path, ".." and NUL bytes are refused. Both storage
    /// types have the same root; `isShared` has no meaning on a phone of one process.
    static void initStorageLocation(std::string& path, int storageType, bool isShared);

    /// What is in the directory, sorted by name. Hidden names, which begin with ".", are left out:
    /// such a file is still being received.
    static std::vector<StorageEntry> list(const std::string& directory);
    // The same by kind: each replaces `names` by names of the directory, or with `fullPaths` by
    // those behind the directory, sorted. A directory that is not there holds none.
    static void getListOfFilesByDirectory(const std::string& directory,
                                          std::list<std::string>& names, bool fullPaths);
    static void getListOfLinksByDirectory(const std::string& directory,
                                          std::list<std::string>& names, bool fullPaths);
    static void getListOfFilesAndLinksByDirectory(const std::string& directory,
                                                  std::list<std::string>& names, bool fullPaths);
    static void getListOfDirectoriesByDirectory(const std::string& directory,
                                                std::list<std::string>& names);

    /// Bytes of a file; what a link points to counts.
    static std::uint64_t fileSize(const std::string& fullPath);
    /// 0 when both files have the same contents, 1 when not or when one of them cannot be opened;
    /// what a link points to counts.
    static int compareFiles(const std::string& onePath, const std::string& otherPath);

    /// Removes a file or a link, not what it points to.
    static void deleteFile(const std::string& fullPath);
    static void deleteFile(const std::string& directory, const std::string& name);
    /// Gives a file or a link another name, in one step, in the place of what bears it. The
    /// directory of the new name is made, with its parents.
    static void renameFile(const std::string& fromPath, const std::string& toPath);
    /// The same for a link; a file, also one that came a moment ago, refuses.
    static void renameSymlink(const std::string& fromPath, const std::string& toPath);
    /// Makes a link to `targetPath`, a full path, in a directory that is there. A link of that name
    /// with that target stays; anything else of that name refuses.
    static void createSymlink(const std::string& targetPath, const std::string& linkPath);
    /// The same in the place of a link of that name, or of a file with the contents of the target,
    /// in one step. A file with other contents refuses, also one that came a moment ago.
    static void replaceBySymlink(const std::string& targetPath, const std::string& linkPath);
    /// Removes a link; a file, also one that came a moment ago, refuses.
    static void deleteSymlink(const std::string& directory, const std::string& name);
    /// Copies the contents of a file, or of what a link points to, into a directory that is there.
    /// The copy appears in one step when it is complete, in the place of the file or link of its
    /// name. A file that is copied onto itself stays.
    static void copyFile(const std::string& fromPath, const std::string& toPath);

    /// What the storage is: an identity, which stays the same, and a name for people.
    static void getStorageName(std::string& id, std::string& displayName);
    static StorageSpace space();
};

}  // namespace vireo
