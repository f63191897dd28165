#pragma once

#include <cstdint>
#include <string>

namespace vireo {

/// Files that are read whole.
class SmallFile {
public:
    enum class Readers { eAnybody, eOwnerAlone };

    /// Reads the file at `path` into `content`. False with a one-line `error` that names it, and no
    /// change, when it cannot be read, is no regular file, has more than `largest` bytes, or could
    /// be read by somebody who must not.
    static bool read(const std::string& path, std::uintmax_t largest, std::string& content,
                     std::string& error, Readers readers = Readers::eAnybody);
};

}  // namespace vireo
