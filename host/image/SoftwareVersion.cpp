#include "image/SoftwareVersion.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace vireo {
namespace {

std::optional<std::uint16_t> parseNumber(std::string_view text) {
    std::uint16_t number = 0;
    const auto [stop, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = failure == std::errc() && stop == text.data() + text.size();
    const bool hasLeadingZero = text.size() > 1 && text.front() == '0';
    return isNumber && !hasLeadingZero ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<SoftwareVersion> SoftwareVersion::parse(std::string_view text) {
    SoftwareVersion version;
    std::size_t begin = 0;
    for (std::uint16_t& each : version.numbers) {
        const std::size_t end = std::min(text.find('.', begin), text.size());
        const std::optional<std::uint16_t> number = parseNumber(text.substr(begin, end - begin));
        if (!number) {
            return std::nullopt;
        }
        each = *number;
        if (end == text.size()) {
            return version;
        }
        begin = end + 1;
    }
    return std::nullopt;
}

std::string SoftwareVersion::text() const {
    std::string all = std::to_string(numbers[0]);
    const std::size_t count = numbers.back() == 0 ? kNumbers - 1 : kNumbers;
    for (std::size_t i = 1; i < count; ++i) {
        all += '.' + std::to_string(numbers[i]);
    }
    return all;
}

}  // namespace vireo
