#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace vireo {

/// Passes over plain text many bytes at a time. Most of what is read and written is plain text.
class ByteScan {
public:
    /// The first place at or behind `from` before which all bytes are printable ASCII, or DEL. It
    /// may stop up to fifteen bytes early.
    static std::size_t skipAscii(std::string_view text, std::size_t from) {
        return skip(text, from, [](auto bytes) { return findOthers(bytes); });
    }

    /// Likewise, before which none of `Characters` stands; all other bytes are passed over.
    template <char... Characters>
    static std::size_t skipOthers(std::string_view text, std::size_t from) {
        return skip(text, from, [](auto bytes) { return (find(bytes, Characters) | ...); });
    }

    /// Likewise, before which all is as for `skipAscii` and none of `Characters` stands.
    template <char... Characters>
    static std::size_t skipAsciiOthers(std::string_view text, std::size_t from) {
        return skip(text, from,
                    [](auto bytes) { return findOthers(bytes) | (find(bytes, Characters) | ...); });
    }

    /// Whether all of it is printable ASCII, DEL, tabs, line feeds and carriage returns.
    static bool isPlainText(std::string_view text) {
        const auto find = [](auto bytes) { return findOutsideLines(bytes); };
        for (std::size_t at = skip(text, 0, find); at < text.size(); at = skip(text, at, find)) {
            const std::size_t end = std::min(at + sizeof(Word), text.size());
            for (; at < end; ++at) {
                const auto byte = static_cast<unsigned char>(text[at]);
                if (byte >= 0x80 || (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r')) {
                    return false;
                }
            }
        }
        return true;
    }

private:
    // Eight bytes at once. `find` sets bits if, and only if, one of the bytes is the character;
    // `findOthers` if one is neither printable ASCII nor DEL.
    using Word = std::uint64_t;

    static constexpr Word repeat(Word byte) { return byte * 0x0101010101010101U; }
    static constexpr Word find(Word bytes, char character) {
        const Word zeroWhereFound = bytes ^ repeat(static_cast<unsigned char>(character));
        return (zeroWhereFound - repeat(0x01)) & ~zeroWhereFound & repeat(0x80);
    }
    static constexpr Word findOthers(Word bytes) {
        // A byte below 0x20 borrows, which sets a high bit.
        return (bytes | (bytes - repeat(0x20))) & repeat(0x80);
    }
    /// Those of `findOthers` that are no line feeds. Here each byte has a bit of its own.
    static constexpr Word findOutsideLines(Word bytes) {
        const Word other = bytes ^ repeat('\n');
        const Word isPrintable = (bytes & repeat(0x7F)) + repeat(0x60);
        const Word isOther = ((other & repeat(0x7F)) + repeat(0x7F)) | other;
        return (bytes | (~isPrintable & isOther)) & repeat(0x80);
    }
    static constexpr bool isZero(Word bits) { return bits == 0; }

#if defined(__SSE2__) || defined(__ARM_NEON)
    // Sixteen, where the processor compares them in one instruction.
    using Block = signed char __attribute__((vector_size(16)));

    static Block find(Block bytes, char character) {
        return bytes == static_cast<signed char>(character);
    }
    static Block findOthers(Block bytes) {
        return bytes < static_cast<signed char>(0x20);  // those above 0x7F are below zero here
    }
    static Block findOutsideLines(Block bytes) {
        return findOthers(bytes) & ~find(bytes, '\n');
    }
    static bool isZero(Block bits) {
        Word halves[2];
        std::memcpy(halves, &bits, sizeof halves);
        return (halves[0] | halves[1]) == 0;
    }
#else
    using Block = Word;
#endif

    template <class Bytes, class Find>
    static std::size_t skipWhole(std::string_view text, std::size_t from, Find find) {
        Bytes bytes{};
        while (text.size() - from >= sizeof bytes) {
            std::memcpy(&bytes, text.data() + from, sizeof bytes);
            if (!isZero(find(bytes))) {
                break;
            }
            from += sizeof bytes;
        }
        return from;
    }

    template <class Find>
    static std::size_t skip(std::string_view text, std::size_t from, Find find) {
        return skipWhole<Word>(text, skipWhole<Block>(text, from, find), find);
    }
};

}  // namespace vireo
