#include "data/XmlText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "data/ByteScan.h"
#include "data/Utf8.h"

namespace vireo {
namespace {

struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

constexpr Range kNameStart[] = {
    {'A', 'Z'},       {'_', '_'},       {'a', 'z'},       {0xC0, 0xD6},     {0xD8, 0xF6},
    {0xF8, 0x2FF},    {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F},
    {0x2C00, 0x2FEF}, {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};

constexpr bool isNameStart(std::uint32_t c) {
    return std::any_of(std::begin(kNameStart), std::end(kNameStart),
                       [c](Range range) { return c >= range.first && c <= range.last; });
}

constexpr bool isNamePart(std::uint32_t c) {
    return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == 0xB7 ||
           (c >= 0x300 && c <= 0x36F) || c == 0x203F || c == 0x2040;
}

/// For the characters below 0x80, of which nearly all names are.
enum : unsigned char { eStartsName = 1, eIsInName = 2 };

constexpr std::array<unsigned char, 0x80> kAsciiNames = [] {
    std::array<unsigned char, 0x80> table{};
    for (std::uint32_t c = 0; c < table.size(); ++c) {
        table[c] = static_cast<unsigned char>((isNameStart(c) ? eStartsName : 0) |
                                              (isNamePart(c) ? eIsInName : 0));
    }
    return table;
}();

/// `Replaced` are the characters for which there is a replacement.
template <char... Replaced, class Replacement>
void appendReplacing(std::string& out, std::string_view text, Replacement replacement) {
    std::size_t start = 0;
    for (std::size_t i = ByteScan::skipOthers<Replaced...>(text, 0); i < text.size(); ++i) {
        const char* instead = replacement(text[i]);
        if (instead != nullptr) {
            out.append(text, start, i - start);
            out.append(instead);
            start = i + 1;
            i = ByteScan::skipOthers<Replaced...>(text, start) - 1;
        }
    }
    out.append(text, start);
}

}  // namespace

bool XmlText::isName(std::string_view name) noexcept {
    std::size_t position = 0;
    while (position < name.size()) {
        const bool isFirst = position == 0;
        const auto byte = static_cast<unsigned char>(name[position]);
        if (byte < kAsciiNames.size()) {
            if ((kAsciiNames[byte] & (isFirst ? eStartsName : eIsInName)) == 0) {
                return false;
            }
            ++position;
            continue;
        }
        std::uint32_t c = 0;
        if (!Utf8::next(name, position, c) || !(isFirst ? isNameStart(c) : isNamePart(c))) {
            return false;
        }
    }
    return !name.empty();
}

std::optional<std::string> XmlText::findUncarriable(std::string_view text) {
    std::size_t position = ByteScan::skipAscii(text, 0);
    while (position < text.size()) {
        const std::size_t start = position;
        std::uint32_t c = 0;
        if (!Utf8::next(text, position, c) || !Utf8::isXmlCharacter(c)) {
            std::array<char, 64> found{};
            std::snprintf(found.data(), found.size(), "byte 0x%02x at position %zu",
                          static_cast<unsigned>(static_cast<unsigned char>(text[start])), start);
            return std::string(found.data());
        }
        if (c < 0x20 || c >= 0x80) {
            position = ByteScan::skipAscii(text, position);
        }
    }
    return std::nullopt;
}

bool XmlText::isPlain(std::string_view text) {
    std::size_t position = ByteScan::skipAsciiOthers<'&', '<', '>'>(text, 0);
    for (; position < text.size(); ++position) {
        const char c = text[position];
        if (c == '&' || c == '<' || c == '>' || c == '\r') {
            return false;
        }
        if (c < 0x20 || c > 0x7E) {  // rare: the rest is looked at in two steps
            const std::string_view rest = text.substr(position);
            return rest.find_first_of("&<>\r") == std::string_view::npos && !findUncarriable(rest);
        }
    }
    return true;
}

void XmlText::appendEscaped(std::string& out, std::string_view text) {
    appendReplacing<'&', '<', '>', '\r'>(out, text, [](char c) -> const char* {
        switch (c) {
            case '&':
                return "&amp;";
            case '<':
                return "&lt;";
            case '>':
                return "&gt;";
            case '\r':  // a bare one would come back as a line feed
                return "&#13;";
            default:
                return nullptr;
        }
    });
}

void XmlText::appendEscapedAttribute(std::string& out, std::string_view text) {
    appendReplacing<'&', '<', '>', '"', '\t', '\n', '\r'>(out, text, [](char c) -> const char* {
        switch (c) {
            case '&':
                return "&amp;";
            case '<':
                return "&lt;";
            case '>':
                return "&gt;";
            case '"':
                return "&quot;";
            case '\t':  // bare white space would come back as a blank
                return "&#9;";
            case '\n':
                return "&#10;";
            case '\r':
                return "&#13;";
            default:
                return nullptr;
        }
    });
}

}  // namespace vireo
