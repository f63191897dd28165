#pragma once

#include <string>

namespace CLI {
class App;
}

namespace vireo {

/// The host's settings file: a `KeyValueFile` where each key is the name of a command-line option
/// without its dashes.
class SettingsFile {
public:
    /// Gives the values of the file at `path` to the options of `app` that may stand in a file.
    /// False with a one-line `error` that names file, line and key: the file cannot be read, a line
    /// is no setting, a key is unknown or there twice, a value has the wrong type or is out of
    /// range.
    static bool apply(const std::string& path, CLI::App& app, std::string& error);
};

}  // namespace vireo
