#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace vireo {

/// The whole text as a decimal number; nothing when it is another text or out of range.
template <class Number>
std::optional<Number> trapNumber(std::string_view text) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || next != end) {
        return std::nullopt;
    }
    return number;
}

}  // namespace vireo
