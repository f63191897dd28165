#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

#include "files/ConfinedRoot.h"
#include "messages/FileDescriptor.h"

namespace vireo {

/// What is in one file, open for reading. Used by one thread at a time. What fails throws a
/// `StorageError` that names the path.
class FileContents {
public:
    /// A link is followed as long as it leads to a file below `root`; `what` is what is to be done,
    /// for the error.
    FileContents(const ConfinedRoot& root, const char* what, const std::string& fullPath);

    std::uint64_t size() const { return static_cast<std::uint64_t>(m_status.st_size); }
    /// Whether it is the file of that status itself.
    bool isFile(const struct stat& other) const;
    bool equals(const FileContents& other) const;
    /// Appends all of it to an open file, whose path is `path`.
    void copyTo(const FileDescriptor& file, const std::string& path) const;

private:
    std::size_t read(char* buffer, std::uint64_t position) const;

    std::string m_path;
    FileDescriptor m_file;
    struct stat m_status {};
};

}  // namespace vireo
