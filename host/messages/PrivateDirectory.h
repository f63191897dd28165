#pragma once

#include <filesystem>
#include <string>

namespace vireo {

/// Directories that only the service's own user may enter.
class PrivateDirectory {
public:
    /// Makes sure that `path` is a directory. Missing ones, also above it, are created with mode
    /// 0700; those that exist keep their mode. The empty path is the current directory. False with
    /// a one-line `error` that names the directory in question.
    static bool create(const std::filesystem::path& path, std::string& error);
};

}  // namespace vireo
