#pragma once

#include <string>

#include "Visibility.h"

namespace vireo {

/// The operating system's shell. Forwards to the installed `ShellPort`. Safe from every thread.
/// Nothing is thrown; what fails is logged.
class VIREO_API PlatformShell {
public:
    /// Runs a command and waits for its end. Its exit status, or -1 when it could not be run and
    /// without a port. A platform that only stands for the phone does below its own root what the
    /// command would do, and refuses what it does not know.
    static int run(const std::string& command);
};

}  // namespace vireo
