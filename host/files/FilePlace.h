#pragma once

#include <sys/stat.h>

#include <string>

#include "files/ConfinedRoot.h"
#include "messages/FileDescriptor.h"

namespace vireo {

/// A file by its directory, which is open, and its name there.
struct FilePlace {
    /// `what` is what is to be done with it, for the `StorageError` that says why it cannot be.
    FilePlace(const ConfinedRoot& root, const char* what, const std::string& fullPath,
              ConfinedRoot::Missing missing);

    /// False, with errno, when there is nothing. `flags` as fstatat has them.
    bool status(struct stat& status, int flags) const;
    /// Whether both are the same name of the same directory.
    bool isSameAs(const FilePlace& other) const;

    FileDescriptor directory;
    std::string name;
};

/// Throws a `StorageError`: "cannot `what` "`path`": `reason`".
[[noreturn]] void failOn(const char* what, const std::string& path, const std::string& reason);
/// The same with the reason that is in errno.
[[noreturn]] void failOn(const char* what, const std::string& path);

}  // namespace vireo
