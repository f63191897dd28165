#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace vireo {

/// What the command line says.
struct HostOptions {
    std::string configDirectory;
    std::string root;
    std::string socket;
    std::string plugin;
    std::string logFile;  ///< empty: standard error
    int logLevel = 0;
    std::size_t maximumPeers = 0;
    bool isCheck = false;  ///< check the configuration instead of serving it

    /// Nothing when the process ends here, with `exitCode`: 2 for a wrong usage, which was
    /// explained on standard error, 0 when help or version were asked for and printed.
    static std::optional<HostOptions> parse(int argc, const char* const* argv, int& exitCode);
};

}  // namespace vireo
