#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "messages/LockFile.h"

namespace vireo {

/// The directory below which everything lies that the phone keeps. One service at a time holds it.
class DeviceRoot {
public:
    /// Creates the directory, mode 0700, where it is missing, and locks it. It may be on a
    /// read-only file system. Empty with a one-line `error` that names the path, also when another
    /// service holds it.
    static std::optional<DeviceRoot> prepare(const std::filesystem::path& path, std::string& error);

    const std::filesystem::path& path() const { return m_path; }

private:
    DeviceRoot(std::filesystem::path path, LockFile lock)
        : m_path(std::move(path)), m_lock(std::move(lock)) {}

    std::filesystem::path m_path;
    LockFile m_lock;
};

}  // namespace vireo
