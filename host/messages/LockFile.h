#pragma once

#include <optional>
#include <string>

#include "messages/FileDescriptor.h"

namespace vireo {

/// A lock that one process at a time holds. The kernel gives it back when the holder ends, however
/// it ends, so a left-over file never blocks a new start. The file itself stays: removing it would
/// let two processes hold locks on two files of the same name.
class LockFile {
public:
    /// Creates `path` (mode 0600) when it is missing and takes the lock without waiting. Empty with
    /// a one-line `error`, which names the holder's process id where it is known.
    static std::optional<LockFile> acquire(const std::string& path, std::string& error);
    /// Takes a lock on the directory itself, which works where no file can be made. The lock of
    /// `<directory>/.lock` is taken as well if it can be had, for the sake of the holder's id.
    /// Empty with a one-line `error`.
    static std::optional<LockFile> acquireDirectory(const std::string& directory,
                                                    std::string& error);

private:
    explicit LockFile(FileDescriptor file) : m_file(std::move(file)) {}

    FileDescriptor m_file;
    FileDescriptor m_note;  ///< of a directory: the file that names the holder
};

}  // namespace vireo
