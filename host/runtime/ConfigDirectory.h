#pragma once

#include <filesystem>
#include <string>

#include "Ports.h"

namespace vireo {

/// Configuration files in one directory. Stateless but for its path; safe from every thread.
class ConfigDirectory : public ConfigPort {
public:
    static constexpr std::uintmax_t kLargestFile = 64U << 20U;

    explicit ConfigDirectory(std::filesystem::path directory) : m_directory(std::move(directory)) {}

    /// Refuses names that are empty, hold a '/' or begin with a '.', and files over 64 MiB.
    /// `content` is unchanged on failure.
    bool readConfigFile(const std::string& name, std::string& content, std::string& error) override;

private:
    std::filesystem::path m_directory;
};

}  // namespace vireo
