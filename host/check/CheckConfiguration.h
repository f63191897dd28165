#pragma once

#include <string>

namespace vireo {

/// Loads the configuration of `directory` with the loaders of the service in the library `plugin`,
/// and prints on standard output what does not fit together: one line per finding, then one with
/// the numbers. Needs no socket and no root. Answers the exit code: 1 when there are errors, or
/// when the check cannot be made, which is then said on standard error; else 0. For the main
/// thread of a process that does nothing else.
int checkConfiguration(const std::string& directory, const std::string& plugin);

}  // namespace vireo
