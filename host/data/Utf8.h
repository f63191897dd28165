#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vireo {

/// Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
class Utf8 {
public:
    /// Reads the character at `position` and moves behind it; false when there is none or its bytes
    /// are not valid.
    static bool next(std::string_view text, std::size_t& position, std::uint32_t& character) {
        if (position >= text.size()) {
            return false;
        }
        const auto first = static_cast<unsigned char>(text[position]);
        if (first < 0x80) {
            character = first;
            ++position;
            return true;
        }
        return nextLong(text, position, character);
    }

    /// Whether an XML 1.0 document can hold the character.
    static bool isXmlCharacter(std::uint32_t c) {
        if (c < 0x20) {
            return c == '\t' || c == '\n' || c == '\r';
        }
        return c != 0xFFFE && c != 0xFFFF && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
    }

private:
    static bool nextLong(std::string_view text, std::size_t& position, std::uint32_t& character);
};

}  // namespace vireo
