#include "HostOptions.h"

#include <CLI/CLI.hpp>
#include <filesystem>

#include "log/Log.h"
#include "messages/MessageLoop.h"

namespace vireo {
namespace {

constexpr int kWrongUsage = 2;
constexpr std::size_t kMostPeers = 1U << 16U;

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
    options.root = "/var/lib/vireo";
    options.socket = "/run/vireo/vireo.sock";
    options.plugin = prefix / VIREO_PLUGIN_DIR / "libvireo_client_mgmt.so";
    options.logLevel = kLogWarning;  // information has every message in it, passwords too
    options.maximumPeers = MessageLoop::kDefaultMaximumPeers;
    return options;
}

void declare(CLI::App& app, HostOptions& options) {
    app.add_option("--config", options.configDirectory, "Directory of the configuration files")
        ->type_name("DIR")
        ->capture_default_str();
    app.add_option("--root", options.root, "Directory that holds everything the phone keeps")
        ->type_name("DIR")
        ->capture_default_str();
    app.add_option("--socket", options.socket, "Unix socket that peers connect to")
        ->type_name("PATH")
        ->capture_default_str();
    app.add_option("--plugin", options.plugin, "Service library")
        ->type_name("FILE")
        ->capture_default_str();
    app.add_option("--log-level", options.logLevel,
                   "2 errors, 3 warnings, 4 information, 5 debugging, 6 with whole records")
        ->type_name("N")
        ->check(CLI::Range(kLogError, kLogDump))
        ->capture_default_str();
    app.add_option("--log-file", options.logFile, "Log file instead of standard error")
        ->type_name("FILE");
    app.add_option("--max-peers", options.maximumPeers, "Peers that are served at the same time")
        ->type_name("N")
        ->check(CLI::Range(std::size_t{1}, kMostPeers))
        ->capture_default_str();
    app.add_flag("--check-config", options.isCheck,
                 "Say what does not fit together in the configuration files, and end");
    app.set_version_flag("--version", std::string("vireod ") + VIREO_VERSION);
}

}  // namespace

std::optional<HostOptions> HostOptions::parse(int argc, const char* const* argv, int& exitCode) {
    HostOptions options = defaults();
    CLI::App app("Client management service of the phone", "vireod");
    declare(app, options);
    try {
        app.parse(argc, argv);
        return options;
    } catch (const CLI::ParseError& wish) {
        exitCode = app.exit(wish) == 0 ? 0 : kWrongUsage;
        return std::nullopt;
    }
}

}  // namespace vireo
