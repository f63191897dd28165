#pragma once

#include <functional>
#include <string>

namespace vireo {

/// Text files of lines `key = value`. A value may stand in double quotes, which allow it to be
/// empty, to hold '#', and to begin or end with blanks; nothing is escaped in it. A '#' begins a
/// comment.
class KeyValueFile {
public:
    /// Takes one setting. False with a `fault` when it is not wanted, which ends the reading.
    using Taker =
        std::function<bool(const std::string& key, const std::string& value, std::string& fault)>;

    /// Gives all settings of the file at `path` to `take`, in order. False with a one-line `error`
    /// that names the file, and the line if one of them is the reason.
    static bool read(const std::string& path, const Taker& take, std::string& error);
};

}  // namespace vireo
