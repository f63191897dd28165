#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "Ports.h"

namespace vireo {

/// Configuration files in one directory. Stateless but for its path; safe from every thread.
class ConfigDirectory : public ConfigPort {
public:
    static constexpr std::uintmax_t kDefaultLargestFile = 64U << 20U;

    /// Files of more than `largestFile` bytes are refused.
    explicit ConfigDirectory(std::filesystem::path directory,
                             std::uintmax_t largestFile = kDefaultLargestFile)
        : m_directory(std::move(directory)), m_largestFile(largestFile) {}

    /// Refuses names that are empty, hold a '/' or begin with a '.', and too large files.
    /// `content` is unchanged on failure.
    bool readConfigFile(const std::string& name, std::string& content, std::string& error) override;

private:
    std::filesystem::path m_directory;
    std::uintmax_t m_largestFile;
};

}  // namespace vireo
