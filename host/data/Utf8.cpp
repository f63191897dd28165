#include "data/Utf8.h"

namespace vireo {

bool Utf8::nextLong(std::string_view text, std::size_t& position, std::uint32_t& character) {
    const auto first = static_cast<unsigned char>(text[position]);
    std::size_t length = 0;
    std::uint32_t smallest = 0;
    std::uint32_t value = 0;
    if (first >= 0xC2 && first <= 0xDF) {
        length = 2;
        smallest = 0x80;
        value = first & 0x1FU;
    } else if (first >= 0xE0 && first <= 0xEF) {
        length = 3;
        smallest = 0x800;
        value = first & 0x0FU;
    } else if (first >= 0xF0 && first <= 0xF4) {
        length = 4;
        smallest = 0x10000;
        value = first & 0x07U;
    } else {
        return false;
    }
    if (text.size() - position < length) {
        return false;
    }
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[position + i]);
        if ((next & 0xC0U) != 0x80) {
            return false;
        }
        value = value << 6U | (next & 0x3FU);
    }
    if (value < smallest || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
        return false;
    }
    character = value;
    position += length;
    return true;
}

}  // namespace vireo
