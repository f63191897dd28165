#pragma once

#include <cstddef>

namespace vireo {

/// How log lines are written.
struct LogOptions {
    /// How long lines that are no errors may wait.
    int flushSeconds = 1;
    /// A log file that would grow beyond this is renamed, `vireod.log` to `vireod.1.log`, and a new
    /// one begun.
    std::size_t maximumFileBytes = 16U << 20U;
    /// So many renamed files are kept; the oldest goes.
    std::size_t keptFiles = 3;
    /// Whether passwords and the like are left out of the lines, see `SecretMask`.
    bool masksSecrets = true;
};

}  // namespace vireo
