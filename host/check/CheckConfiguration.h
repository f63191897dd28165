#pragma once

#include "options/HostOptions.h"

namespace vireo {

/// Loads the configuration directory of `options` with the loaders of its plug-in, and prints on
/// standard output what does not fit together: one line per finding, then one with the numbers.
/// Needs no socket and no root. Answers the exit code: 1 when there are errors, or when the check
/// cannot be made, which is then said on standard error; else 0. For the main thread of a process
/// that does nothing else.
int checkConfiguration(const HostOptions& options);

}  // namespace vireo
