#include "options/HostOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <limits>

#include "log/Log.h"
#include "messages/PeerDirectory.h"
#include "options/DeviceDeclarations.h"
#include "options/OptionKinds.h"
#include "options/SettingsFile.h"

namespace vireo {
namespace {

constexpr int kWrongUsage = 2;
constexpr const char* kSettingsName = "vireod.conf";

/// The directory above that of the program: where its other parts lie, wherever it is installed.
std::filesystem::path installationPrefix() {
    std::error_code failure;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failure);
    return failure ? std::filesystem::path("/usr") : program.parent_path().parent_path();
}

HostOptions defaults() {
    const std::filesystem::path prefix = installationPrefix();
    HostOptions options;
    options.configDirectory = prefix / "share/vireo/config";
    options.plugin = prefix / VIREO_PLUGIN_DIR / "libvireo_client_mgmt.so";
    return options;
}

std::string checkNamedFile(const std::string& text) {
    const std::size_t equals = text.find('=');
    const bool hasBoth = equals != std::string::npos && equals + 1 < text.size() &&
                         PeerDirectory::isName(std::string_view(text).substr(0, equals));
    return hasBoth ? std::string() : "\"" + text + "\" is no channel name, '=' and file";
}

void declarePaths(CLI::App& app, HostOptions& options) {
    app.add_option("--root", options.root, "Directory that holds everything the phone keeps")
        ->type_name("DIR")
        ->capture_default_str();
    app.add_option("--socket", options.socket, "Unix socket that peers connect to")
        ->type_name("PATH")
        ->capture_default_str();
    app.add_option("--plugin", options.plugin, "Service library")
        ->type_name("FILE")
        ->capture_default_str();
    app.add_option_function<std::vector<std::string>>(
           "--service",
           [&options](const std::vector<std::string>& texts) {
               options.services.clear();
               for (const std::string& text : texts) {
                   const std::size_t equals = text.find('=');
                   options.services.push_back({text.substr(0, equals), text.substr(equals + 1)});
               }
           },
           "Another service to load, and the channel name that it has; any number of times")
        ->type_name("NAME=FILE")
        ->check(checkNamedFile)
        ->allow_extra_args(false);
}

/// As long as a log file can be told to get: a tebibyte, or what a size holds.
constexpr auto kLargestLogFile = static_cast<std::size_t>(
    std::min(std::uintmax_t{1} << 40U, std::uintmax_t{std::numeric_limits<std::size_t>::max()}));

void declareLog(CLI::App& app, HostOptions& options) {
    declareNumber(app, "--log-level", options.logLevel, int{kLogError}, int{kLogReboot},
                  "2 errors, 3 warnings, 4 information, 5 debugging, 6 with whole records, 7 all");
    app.add_option("--log-file", options.logFile, "Log file instead of standard error")
        ->type_name("FILE");
    declareNumber(app, "--log-flush-seconds", options.log.flushSeconds, 1, 3600,
                  "How long lines that are no errors may wait to be written");
    declareNumber(app, "--log-max-bytes", options.log.maximumFileBytes, std::size_t{64} << 10U,
                  kLargestLogFile, "A log file that gets longer is renamed and a new one begun");
    declareNumber(app, "--log-kept-files", options.log.keptFiles, std::size_t{0}, std::size_t{1000},
                  "Renamed log files that are kept");
    declareAnswer(app, "--log-mask-secrets", options.log.masksSecrets,
                  "Whether passwords are left out of log lines: yes or no");
}

void declareLimits(CLI::App& app, HostOptions& options) {
    MessageLimits& limits = options.messages;
    declareNumber(app, "--max-peers", limits.maximumPeers, std::size_t{1}, std::size_t{1} << 16U,
                  "Peers that are served at the same time");
    declareNumber(app, "--max-message-bytes", limits.maximumRequest, std::uint32_t{1024},
                  FrameCodec::kMaximumPayload, "Longest message that is taken");
    declareNumber(app, "--max-unsent-bytes", limits.maximumUnsent, std::size_t{64} << 10U,
                  std::size_t{1} << 30U, "Unsent replies to a peer before it is not read from");
    declareNumber(app, "--max-queued-bytes", limits.maximumQueued, std::size_t{5} << 20U,
                  std::size_t{1} << 30U, "Bytes that wait for a peer before it is disconnected");
    declareNumber(app, "--answer-timeout-ms", limits.answerTimeoutMs, 10, 600'000,
                  "How long the service waits for the answer of an owner");
    declareNumber(app, "--max-config-file-bytes", options.maximumConfigFile, std::uintmax_t{1024},
                  std::uintmax_t{1} << 30U, "Largest configuration file");
    declareNumber(app, "--socket-backlog", limits.backlog, 1, 4096,
                  "Peers that may wait to be accepted");
    declareNumber(app, "--accept-pause-ms", limits.acceptPauseMs, 1, 60'000,
                  "Pause when the machine has no means for one more peer");
}

std::string checkPlainName(const std::string& text) {
    const bool isPlain =
        !text.empty() && text.front() != '.' && text.find('/') == std::string::npos;
    return isPlain ? std::string() : "\"" + text + "\" is no plain file name";
}

void declareStore(CLI::App& app, HostOptions& options) {
    app.add_option("--store-file", options.storeFile, "Database of the store, below the root")
        ->type_name("PATH")
        ->check(checkBelow)
        ->capture_default_str();
    app.add_option("--store-catalogue", options.storeCatalogue,
                   "Configuration file that says what the store consists of")
        ->type_name("NAME")
        ->check(checkPlainName)
        ->capture_default_str();
    declareNumber(app, "--store-busy-ms", options.store.busyTimeoutMs, 0, 60'000,
                  "How long a write waits for another program that uses the store");
    declareNumber(app, "--store-retry-ms", options.store.retryIntervalMs, 0, 3'600'000,
                  "Pause between attempts to open a store that cannot be used");
}

/// Every option is a setting of the same name, but for those that say which files to read.
void declare(CLI::App& app, HostOptions& options, std::string& settings) {
    app.add_option("--config", options.configDirectory, "Directory of the configuration files")
        ->type_name("DIR")
        ->configurable(false)
        ->capture_default_str();
    app.add_option("--settings", settings,
                   std::string("File of the settings below (default: ") + kSettingsName +
                       " in the configuration directory, if it is there)")
        ->type_name("FILE")
        ->configurable(false);
    declarePaths(app, options);
    declareLog(app, options);
    declareLimits(app, options);
    declareStore(app, options);
    declareDevices(app, options.devices);
    app.add_flag("--check-config", options.isCheck,
                 "Say what does not fit together in the configuration files, and end")
        ->configurable(false);
    CLI::Option* const setPassword =
        app.add_option(
               "--set-password", options.passwordToSet,
               "Ask for the password NAME of the phone, set it, and end; NAME is factory-reset")
            ->type_name("NAME")
            ->check(CLI::IsMember({"factory-reset"}))
            ->configurable(false);
    app.add_flag("--password-stdin", options.readsPassword,
                 "With --set-password: read the password from standard input")
        ->needs(setPassword)
        ->configurable(false);
    app.set_version_flag("--version", std::string("vireod ") + VIREO_VERSION);
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return std::string("vireod: ") + error.what() + " (vireod --help lists the options)\n";
    });
}

/// Gives the values of the settings file to `options`. False: it was said why.
bool readSettings(const std::string& configDirectory, const std::string& named,
                  HostOptions& options) {
    std::string path = named;
    std::error_code ignored;
    if (path.empty()) {
        path = std::filesystem::path(configDirectory) / kSettingsName;
        // A directory that cannot be entered is reported with the configuration and stops nothing.
        if (!std::filesystem::exists(path, ignored)) {
            return true;
        }
    }
    CLI::App app;
    std::string unused;
    declare(app, options, unused);
    std::string error;
    if (!SettingsFile::apply(path, app, error)) {
        std::fprintf(stderr, "vireod: %s\n", error.c_str());
        return false;
    }
    return true;
}

bool parseCommandLine(int argc, const char* const* argv, HostOptions& options,
                      std::string& settings, int& exitCode) {
    CLI::App app("Client management service of the phone", "vireod");
    declare(app, options, settings);
    try {
        app.parse(argc, argv);
        return true;
    } catch (const CLI::ParseError& wish) {
        exitCode = app.exit(wish) == 0 ? 0 : kWrongUsage;
        return false;
    }
}

}  // namespace

std::optional<HostOptions> HostOptions::parse(int argc, const char* const* argv, int& exitCode) {
    // Which settings file to read is known after a first time; the second overrides what it says.
    HostOptions options = defaults();
    HostOptions first = options;
    std::string settings;
    if (!parseCommandLine(argc, argv, first, settings, exitCode)) {
        return std::nullopt;
    }
    if (!readSettings(first.configDirectory, settings, options)) {
        exitCode = kWrongUsage;
        return std::nullopt;
    }
    if (!parseCommandLine(argc, argv, options, settings, exitCode)) {
        return std::nullopt;
    }
    return options;
}

}  // namespace vireo
