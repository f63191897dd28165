#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "log/LogOptions.h"
#include "messages/MessageLimits.h"
#include "options/DeviceOptions.h"
#include "runtime/ConfigDirectory.h"
#include "runtime/LoadedServices.h"
#include "store/StoreOptions.h"

namespace vireo {

/// What the command line and the settings file say. The values here are the defaults; those that
/// are empty depend on where the program lies.
struct HostOptions {
    std::string configDirectory;
    std::string plugin;
    std::string root = "/var/lib/vireo";
    std::string socket = "/run/vireo/vireo.sock";

    std::vector<NamedPlugin> services;  ///< further ones in this process

    std::string logFile;  ///< empty: standard error
    int logLevel = 3;     ///< warnings; information has every message in it
    LogOptions log;

    MessageLimits messages;
    std::uintmax_t maximumConfigFile = ConfigDirectory::kDefaultLargestFile;

    std::string storeFile = "data/das/store.db";  ///< below the root
    std::string storeCatalogue = "store.xml";     ///< in the configuration directory
    StoreOptions store;

    DeviceOptions devices;

    bool isCheck = false;        ///< check the configuration instead of serving it
    std::string passwordToSet;   ///< its name: set it instead of serving; empty: none
    bool readsPassword = false;  ///< from standard input

    /// Reads the command line and the settings file that it names, or else the one in the
    /// configuration directory if there is one. What the command line says wins.
    ///
    /// Nothing when the process ends here, with `exitCode`: 2 for a wrong usage or a wrong settings
    /// file, which was explained on standard error in one line, 0 when help or version were asked
    /// for and printed.
    static std::optional<HostOptions> parse(int argc, const char* const* argv, int& exitCode);
};

}  // namespace vireo
