#include "device/PlatformShell.h"

#include "Ports.h"
#include "device/DevicePorts.h"
#include "log/Log.h"

namespace vireo {

int PlatformShell::run(const std::string& command) {
    ShellPort* const shell = installedPorts().shell;
    std::string error = "there is no shell for \"" + command + '"';
    const int status = shell != nullptr ? shell->run(command, error) : -1;
    if (status < 0 && loggingOnUni(kLogError)) {
        logAppUni("PlatformShell", "./host/device/PlatformShell", kLogError, __LINE__, "%s",
                  error.c_str());
    }
    return status;
}

}  // namespace vireo
