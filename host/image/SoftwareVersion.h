#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vireo {

/// Which software it is: up to four numbers, such as "2.1.0", the first one counting most. Those
/// that are not written are 0.
struct SoftwareVersion {
    static constexpr std::size_t kNumbers = 4;

    std::array<std::uint16_t, kNumbers> numbers{};

    /// One to four decimal numbers up to 65535 with dots between them, without leading zeros.
    static std::optional<SoftwareVersion> parse(std::string_view text);
    /// Three numbers, or four where the last one is not 0.
    std::string text() const;

    friend auto operator<=>(const SoftwareVersion&, const SoftwareVersion&) = default;
};

}  // namespace vireo
