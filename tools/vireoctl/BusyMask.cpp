#include "BusyMask.h"

#include <charconv>
#include <cstdint>
#include <system_error>

namespace vireo {
namespace {

struct Reason {
    unsigned bit;
    const char* name;
};

// Other bits belong to whoever sets them.
constexpr Reason kReasons[] = {{1, "call"}, {512, "software update"}};

}  // namespace

std::optional<unsigned> BusyMask::parse(std::string_view argument, std::string& error) {
    std::string_view digits = argument;
    const bool isHexadecimal = digits.substr(0, 2) == "0x" || digits.substr(0, 2) == "0X";
    digits.remove_prefix(isHexadecimal ? 2 : 0);
    std::uint32_t bits = 0;
    const char* const end = digits.data() + digits.size();
    const auto [next, failure] = std::from_chars(digits.data(), end, bits, isHexadecimal ? 16 : 10);
    if (failure != std::errc() || next != end) {
        error = "'" + std::string(argument) + "' is no number of 32 bits, decimal or 0x...";
        return std::nullopt;
    }
    return bits;
}

std::string BusyMask::describe(unsigned mask) {
    std::string text;
    const auto add = [&text](unsigned bits, const char* name) {
        text += (text.empty() ? "" : ", ") + std::to_string(bits) + " " + name;
    };
    for (const auto& [bit, name] : kReasons) {
        if ((mask & bit) != 0) {
            add(bit, name);
            mask &= ~bit;
        }
    }
    if (mask != 0) {
        add(mask, "other");
    }
    return text.empty() ? "idle" : text;
}

}  // namespace vireo
