#pragma once

#include <string>

namespace vireo {

/// The store's file among its neighbours on the disk: itself and what SQLite keeps beside it
/// (path + "-wal", "-shm", "-journal"). Touches no content. Use while no connection is open.
class StoreFile {
public:
    explicit StoreFile(std::string path);

    /// Makes the file (0600) and the directories above it (0700) as far as they are absent. False
    /// with `error` when it cannot be read and written, or is no ordinary file.
    bool makeUsable(std::string& error) const;

    /// Whether it is there without any content.
    bool isEmpty() const;
    /// Whether it certainly is not there.
    bool isMissing() const;
    bool isRegular() const;

    /// Whether a write-ahead log with content stands beside a missing or empty file. SQLite would
    /// delete it, and with it the last updates.
    bool hasOrphanedLog() const;

    /// Renames the file and its neighbours to a name that nothing had yet, path + ".damaged-N".
    /// Answers the new name; empty with `error` when that failed. Nothing is ever overwritten.
    std::string setAside(std::string& error) const;

private:
    std::string m_path;
};

}  // namespace vireo
