#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "Visibility.h"

namespace vireo {

/// Rules of XML text that values, tags and documents have to keep. Stateless.
class VIREO_API XmlText {
public:
    /// Whether `name` is one XML name without a colon, such as an item's tag.
    static bool isName(std::string_view name) noexcept;

    /// What XML cannot carry in `text`, as "byte 0x01 at position 3", or nothing when all of it can
    /// be carried (valid UTF-8, no control characters but tab, line feed and carriage return).
    static std::optional<std::string> findUncarriable(std::string_view text);

    /// Whether `text` is its own element content: it can be carried, and nothing in it is escaped.
    static bool isPlain(std::string_view text);

    /// Appends `text` as element content. Every byte comes back from a conforming parser.
    static void appendEscaped(std::string& out, std::string_view text);
    /// Appends `text` as the content of an attribute in double quotes.
    static void appendEscapedAttribute(std::string& out, std::string_view text);
};

}  // namespace vireo
