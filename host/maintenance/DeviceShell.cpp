#include "maintenance/DeviceShell.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string_view>
#include <system_error>

#include "device/StorageError.h"
#include "log/Log.h"
#include "maintenance/DirectoryEmptier.h"

namespace vireo {
namespace {

constexpr std::string_view kRemove = "/bin/rm -rf ";
constexpr std::string_view kEverything = "/*";
constexpr int kFailed = 1;
constexpr int kNotRun = -1;

void logLine(int level, int line, const std::string& text) {
    if (loggingOnUni(level)) {
        logAppUni("DeviceShell", "./host/maintenance/DeviceShell", level, line, "%s", text.c_str());
    }
}

/// The directory that a command empties; empty for any other command.
std::string_view emptiedBy(std::string_view command) {
    if (!command.starts_with(kRemove) || !command.ends_with(kEverything)) {
        return {};
    }
    command.remove_prefix(kRemove.size());
    command.remove_suffix(kEverything.size());
    const bool isOnePath = command.starts_with('/') &&
                           command.find_first_of(" \t\n*?[\"'\\$`;&|<>") == std::string_view::npos;
    return isOnePath ? command : std::string_view();
}

/// Signals that this process takes itself are not kept from its children.
class SpawnAttributes {
public:
    SpawnAttributes() {
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        ::posix_spawnattr_init(&m_attributes);
        ::posix_spawnattr_setsigmask(&m_attributes, &none);
        ::posix_spawnattr_setsigdefault(&m_attributes, &all);
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&m_attributes); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;

    const posix_spawnattr_t* get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes{};
};

}  // namespace

int DeviceShell::run(const std::string& command, std::string& error) {
    logLine(kLogWarning, __LINE__,
            "shell: " + command + (m_isReal ? "" : " (below " + m_root.path() + ')'));
    return m_isReal ? execute(command, error) : emulate(command, error);
}

int DeviceShell::execute(const std::string& command, std::string& error) {
    const SpawnAttributes attributes;
    char shell[] = "/bin/sh";
    char option[] = "-c";
    std::string text = command;
    char* const arguments[] = {shell, option, text.data(), nullptr};
    pid_t child = -1;
    int reason = ::posix_spawn(&child, shell, nullptr, attributes.get(), arguments, environ);
    int status = 0;
    if (reason == 0) {
        while (::waitpid(child, &status, 0) < 0 && (reason = errno) == EINTR) {
        }
        reason = reason == EINTR ? 0 : reason;
    }
    if (reason != 0 || !WIFEXITED(status)) {
        error =
            "cannot run \"" + command + "\": " +
            (reason != 0 ? std::generic_category().message(reason) : "it was ended by a signal");
        return kNotRun;
    }
    return WEXITSTATUS(status);
}

int DeviceShell::emulate(const std::string& command, std::string& error) const {
    const std::string directory(emptiedBy(command));
    if (directory.empty()) {
        error = "no command of this phone: " + command;
        return kNotRun;
    }
    try {
        const std::vector<std::string> failures = DirectoryEmptier(m_root).empty(directory);
        for (const std::string& failure : failures) {
            logLine(kLogError, __LINE__, failure);
        }
        return failures.empty() ? 0 : kFailed;
    } catch (const StorageError& failure) {  // no path of the phone
        error = failure.what();
        return kNotRun;
    }
}

}  // namespace vireo
