// The commands of Commands that are about maintenance.
#include <unistd.h>

#include "Commands.h"
#include "terminal/PasswordInput.h"
#include "terminal/StopSignal.h"

namespace vireo {
namespace {

constexpr const char* kResetAndReboots = "the phone is reset and reboots";
// The service answers the same to both, and to one who tries passwords it shall stay so.
constexpr const char* kNoReboot =
    "no reboot was started: either the password was refused (a wrong one, none is set, or too soon "
    "after wrong ones) and nothing has changed, or the phone is reset and needs no reboot; the log "
    "of the service says which";
constexpr const char* kReboots = "the phone reboots";
constexpr const char* kNoRebootStarted = "no reboot was started; the log of the service says why";
constexpr const char* kUserDataReset = "the user's data are reset";
constexpr const char* kLastOwnerDidNot =
    "the user's data are reset, but the owner that was asked last did not say that its items are, "
    "or there is none; the log of the service says more";

}  // namespace

ExitCode Commands::factoryReset(const PasswordSource& password) {
    std::string error;
    const std::optional<std::string> given = password(error);
    if (!given) {
        m_errors << "vireoctl: " << error << '\n';
        return ExitCode::eRefused;
    }
    bool result = false;
    const CallStatus status = m_client.performFactoryReset(*given, result);
    return printOutcome(status, "performFactoryReset", result,
                        result ? kResetAndReboots : kNoReboot);
}

ExitCode Commands::reboot(const std::string& reason) {
    bool result = false;
    const CallStatus status = m_client.performReboot(reason, result);
    return printOutcome(status, "performReboot", result, result ? kReboots : kNoRebootStarted);
}

ExitCode Commands::resetUserData() {
    bool result = false;
    const CallStatus status = m_client.clearAllUserData(result);
    return printOutcome(status, "clearAllUserData", result,
                        result ? kUserDataReset : kLastOwnerDidNot);
}

ExitCode Commands::printOutcome(CallStatus status, const char* methodName, bool result,
                                const char* text) {
    ExitCode code = ExitCode::eDone;
    if (!reportFailure(status, code)) {
        m_printer.outcome(methodName, result, text);
        code = result ? ExitCode::eDone : ExitCode::eRefused;
    }
    return code;
}

std::optional<std::string> Commands::askForPassword(bool readsInput, std::string& error) {
    const StopSignal stop;
    return readsInput ? PasswordInput::readLine(STDIN_FILENO, stop, error)
                      : PasswordInput::ask("Password for the factory reset: ", stop, error);
}

}  // namespace vireo
