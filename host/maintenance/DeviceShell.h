#pragma once

#include <filesystem>

#include "device/DevicePorts.h"
#include "files/ConfinedRoot.h"

namespace vireo {

/// Commands of the phone's shell. Each is written to the log as it is, as a warning, before it
/// takes effect. Where the phone is only stood for, no process is started: `/bin/rm -rf DIR/*`
/// empties that directory below the device root, and any other command is refused.
class DeviceShell : public ShellPort {
public:
    /// With `isReal` commands go to the shell of this machine.
    DeviceShell(const std::filesystem::path& root, bool isReal) : m_root(root), m_isReal(isReal) {}

    int run(const std::string& command, std::string& error) override;
    /// Runs a command of this machine without looking at it. The exit status; -1 with an `error`
    /// when it could not be started or was ended by a signal.
    static int execute(const std::string& command, std::string& error);

private:
    int emulate(const std::string& command, std::string& error) const;

    const ConfinedRoot m_root;
    const bool m_isReal;
};

}  // namespace vireo
