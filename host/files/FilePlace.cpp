#include "files/FilePlace.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "device/StorageError.h"

namespace vireo {

void failOn(const char* what, const std::string& path, const std::string& reason) {
    throw StorageError(std::string("cannot ") + what + " \"" + path + "\": " + reason);
}

void failOn(const char* what, const std::string& path) {
    failOn(what, path, std::generic_category().message(errno));
}

FilePlace::FilePlace(const ConfinedRoot& root, const char* what, const std::string& fullPath,
                     ConfinedRoot::Missing missing) {
    PathNames parts = root.locate(fullPath);
    if (parts.isDirectory) {
        failOn(what, fullPath, "it is the name of a directory");
    }
    directory = root.openDirectory(parts.directories(), missing);
    name = std::move(parts.names.back());
}

bool FilePlace::status(struct stat& status, int flags) const {
    return ::fstatat(directory.get(), name.c_str(), &status, flags) == 0;
}

bool FilePlace::isSameAs(const FilePlace& other) const {
    struct stat mine {};
    struct stat its {};
    return name == other.name && ::fstat(directory.get(), &mine) == 0 &&
           ::fstat(other.directory.get(), &its) == 0 && mine.st_dev == its.st_dev &&
           mine.st_ino == its.st_ino;
}

}  // namespace vireo
