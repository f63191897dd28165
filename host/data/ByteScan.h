#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace vireo {

/// Passes over plain text eight bytes at a time. Most of what is read and written is plain text.
class ByteScan {
public:
    /// The first place at or behind `from` before which all bytes are printable ASCII, or DEL. It
    /// may stop up to seven bytes early.
    static std::size_t skipAscii(std::string_view text, std::size_t from) {
        return skip(text, from, [](std::uint64_t bytes) {
            // A byte below 0x20 borrows, which sets a high bit.
            return ((bytes | (bytes - repeat(0x20))) & repeat(0x80)) == 0;
        });
    }

    /// Likewise, before which none of `Characters` stands.
    template <char... Characters>
    static std::size_t skipOthers(std::string_view text, std::size_t from) {
        return skip(text, from, [](std::uint64_t bytes) {
            return (hasZero(bytes ^ repeat(static_cast<unsigned char>(Characters))) | ...) == 0;
        });
    }

private:
    static constexpr std::uint64_t repeat(std::uint64_t byte) { return byte * 0x0101010101010101U; }
    static constexpr std::uint64_t hasZero(std::uint64_t bytes) {
        return (bytes - repeat(0x01)) & ~bytes & repeat(0x80);
    }

    template <class IsPlain>
    static std::size_t skip(std::string_view text, std::size_t from, IsPlain isPlain) {
        std::uint64_t bytes = 0;
        while (text.size() - from >= sizeof bytes) {
            std::memcpy(&bytes, text.data() + from, sizeof bytes);
            if (!isPlain(bytes)) {
                break;
            }
            from += sizeof bytes;
        }
        return from;
    }
};

}  // namespace vireo
