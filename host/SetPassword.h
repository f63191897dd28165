#pragma once

namespace vireo {

struct HostOptions;

/// Asks for a password of the phone, twice on the terminal or once on standard input, and sets it.
/// A service that runs takes it at once. The exit code of the process: 0 when it is set, else 1
/// with one line on standard error.
int setPassword(const HostOptions& options);

}  // namespace vireo
