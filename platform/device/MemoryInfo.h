#pragma once

#include <cstdint>
#include <string>

#include "Visibility.h"

namespace vireo {

/// How much room there is for users' files. A value type; one instance is used by one thread at a
/// time. Nothing is thrown.
class VIREO_API MemoryInfo {
public:
    /// Finds it out. False, with an error line and no change, when there is no storage.
    bool retrieveData();

    /// Bytes of the file system that the files are on.
    std::uint64_t totalBytes() const { return m_totalBytes; }
    /// Bytes of it that may still be written.
    std::uint64_t freeBytes() const { return m_freeBytes; }

    /// Both as decimal numbers in two strings of `Serializer`'s form.
    std::string serialize() const;
    /// False, and no change, when `text` is anything else.
    bool deserialize(const std::string& text);

private:
    std::uint64_t m_totalBytes = 0;
    std::uint64_t m_freeBytes = 0;
};

}  // namespace vireo
