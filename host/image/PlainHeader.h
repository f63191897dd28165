#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace vireo {

/// The line at the beginning of a plain software image:
/// "VIREO-IMAGE 1 <hardware variant> <bytes behind the line>\n".
struct PlainHeader {
    static constexpr std::size_t kLongest = 128;
    static constexpr std::size_t kLongestVariant = 64;

    std::string hardwareVariant;
    std::uint64_t payloadSize = 0;
    std::size_t length = 0;  ///< of the line, with its end

    std::uint64_t fileSize() const { return length + payloadSize; }

    /// Letters, digits, '.', '_' and '-'.
    static bool isVariant(const std::string& text);
    /// Reads the header at the beginning of an open file. Nothing with a `reason` when there is
    /// none.
    static std::optional<PlainHeader> read(int file, std::string& reason);
};

}  // namespace vireo
