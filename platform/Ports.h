#pragma once

#include <string>
#include <string_view>

#include "Visibility.h"

namespace vireo {

/// Where log lines go. Called from any thread; must not log itself and must not throw.
class VIREO_API LogPort {
public:
    virtual ~LogPort() = default;
    /// One finished line without a line end. `level` is 2 (error) to 6 (record dump).
    virtual void write(std::string_view component, std::string_view file, int level, int line,
                       std::string_view text) noexcept = 0;
};

/// Where configuration files come from.
class VIREO_API ConfigPort {
public:
    virtual ~ConfigPort() = default;
    /// Reads the whole file `name` (a plain file name, no directory) into `content`.
    /// False with a one-line `error` when there is no such file or it cannot be read.
    virtual bool readConfigFile(const std::string& name, std::string& content,
                                std::string& error) = 0;
};

class StoragePort;
class TransferPort;
class ImagePort;
class ShellPort;
class RebootPort;
class TrapPort;

/// The real parts behind the platform's named entry points. Null members are allowed: without a
/// log port lines are dropped, without a configuration port every import fails, and what needs one
/// of the others fails with an error line or a `StorageError`.
struct PlatformPorts {
    LogPort* log = nullptr;
    ConfigPort* config = nullptr;
    StoragePort* storage = nullptr;
    TransferPort* transfer = nullptr;
    ImagePort* image = nullptr;
    ShellPort* shell = nullptr;
    RebootPort* reboot = nullptr;
    TrapPort* traps = nullptr;
};

/// Installs the ports (not owned) in place of those that were there. Before the plug-in is loaded
/// and before any thread that uses them is started; they outlive them all. A call after that is
/// meant for tests alone.
VIREO_API void installPorts(const PlatformPorts& ports);
/// The installed ports; empty before `installPorts`.
VIREO_API const PlatformPorts& installedPorts() noexcept;

}  // namespace vireo
