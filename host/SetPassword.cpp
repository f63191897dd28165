#include "SetPassword.h"

#include <unistd.h>

#include <cstdio>
#include <exception>
#include <optional>
#include <string>

#include "options/HostOptions.h"
#include "terminal/PasswordInput.h"
#include "terminal/StopSignal.h"
#ifdef VIREO_PASSWORDS
#include "passwords/PasswordDirectory.h"
#endif

namespace vireo {
namespace {

[[maybe_unused]] std::optional<std::string> readPassword(const HostOptions& options,
                                                         std::string& error) {
    const StopSignal stop;
    if (options.readsPassword) {
        return PasswordInput::readLine(STDIN_FILENO, stop, error);
    }
    const auto first =
        PasswordInput::ask("New password for " + options.passwordToSet + ": ", stop, error);
    auto second = first ? PasswordInput::ask("Once more: ", stop, error) : std::nullopt;
    if (second && *second != *first) {
        error = "the two are not the same";
        return std::nullopt;
    }
    return second;
}

bool trySetting([[maybe_unused]] const HostOptions& options, std::string& error) {
#ifdef VIREO_PASSWORDS
    const auto password = readPassword(options, error);
    return password && PasswordDirectory(options.root, options.devices.passwordDirectory)
                           .set(options.passwordToSet, *password, error);
#else
    error = "it was built without passwords (VIREO_PASSWORDS)";
    return false;
#endif
}

}  // namespace

int setPassword(const HostOptions& options) {
    std::string error;
    bool isSet = false;
    try {
        isSet = trySetting(options, error);
    } catch (const std::exception& exception) {
        error = exception.what();
    }
    if (!isSet) {
        std::fprintf(stderr, "vireod: the password is not set: %s\n", error.c_str());
        return 1;
    }
    std::printf("vireod: the password for %s is set\n", options.passwordToSet.c_str());
    return 0;
}

}  // namespace vireo
