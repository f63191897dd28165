#include "data/XmlSource.h"

#include <charconv>
#include <cstdint>

#include "data/Utf8.h"
#include "data/XmlText.h"

namespace vireo {
namespace {

bool isPredefined(std::string_view entity) {
    return entity == "amp" || entity == "lt" || entity == "gt" || entity == "quot" ||
           entity == "apos";
}

bool isGoodReference(std::string_view entity) {
    if (entity.empty() || entity.front() != '#') {
        return isPredefined(entity);
    }
    entity.remove_prefix(1);
    int base = 10;
    if (!entity.empty() && entity.front() == 'x') {
        base = 16;
        entity.remove_prefix(1);
    }
    std::uint32_t character = 0;
    const char* end = entity.data() + entity.size();
    const auto [next, error] = std::from_chars(entity.data(), end, character, base);
    return !entity.empty() && error == std::errc() && next == end &&
           Utf8::isXmlCharacter(character);
}

/// Moves behind the end mark of a section in which '&' and '<' are plain text. The end mark begins
/// behind the start mark: the "-->" of "<!-->" ends nothing.
bool skipSection(std::string_view source, std::size_t& position, std::size_t startLength,
                 std::string_view endMark) {
    const std::size_t end = source.find(endMark, position + startLength);
    if (end == std::string_view::npos) {
        return false;
    }
    position = end + endMark.size();
    return true;
}

/// Checks the reference at `position` and moves behind it.
bool takeReference(std::string_view source, std::size_t& position, std::string& error) {
    const std::size_t end = source.find(';', position);
    if (end == std::string_view::npos ||
        !isGoodReference(source.substr(position + 1, end - position - 1))) {
        error = "bad reference at position " + std::to_string(position);
        return false;
    }
    position = end + 1;
    return true;
}

/// Moves behind the end of the tag at `position`. A '<' inside a tag is refused: what looks like
/// the start of a section there is none, and must not hide what follows.
bool takeTag(std::string_view source, std::size_t& position, std::string& error) {
    const std::size_t start = position++;
    char quote = '\0';
    while (position < source.size() && source[position] != '<') {
        const char c = source[position];
        if (c == '&') {
            if (!takeReference(source, position, error)) {
                return false;
            }
            continue;
        }
        ++position;
        if (quote != '\0') {
            quote = c == quote ? '\0' : quote;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '>') {
            return true;
        }
    }
    error = "the tag at position " + std::to_string(start) + " is not closed";
    return false;
}

bool takeMarkup(std::string_view source, std::size_t& position, std::string& error) {
    const std::string_view rest = source.substr(position);
    const auto startsWith = [rest](std::string_view mark) {
        return rest.substr(0, mark.size()) == mark;
    };
    bool closed = true;
    if (startsWith("<![CDATA[")) {
        closed = skipSection(source, position, 9, "]]>");
    } else if (startsWith("<!--")) {
        closed = skipSection(source, position, 4, "-->");
    } else if (startsWith("<?")) {
        closed = skipSection(source, position, 2, "?>");
    } else if (startsWith("<!")) {
        error = "a document type is not allowed";
        return false;
    } else {
        return takeTag(source, position, error);
    }
    if (!closed) {
        error = "a section at position " + std::to_string(position) + " is not closed";
    }
    return closed;
}

}  // namespace

bool XmlSource::check(std::string_view source, std::string& error) {
    if (auto uncarriable = XmlText::findUncarriable(source)) {
        error = *uncarriable;
        return false;
    }
    std::size_t position = source.find_first_of("&<");
    while (position != std::string_view::npos) {
        const bool isGood = source[position] == '<' ? takeMarkup(source, position, error)
                                                    : takeReference(source, position, error);
        if (!isGood) {
            return false;
        }
        position = source.find_first_of("&<", position);
    }
    return true;
}

}  // namespace vireo
