#include "image/BootMarker.h"

#include <cstdint>
#include <cstdio>

namespace vireo {
namespace {

/// CRC-32 as Ethernet has it. Finds flipped bits; nobody is kept from anything by it.
std::uint32_t checksum(std::string_view text) {
    std::uint32_t value = 0xffffffffU;
    for (const char each : text) {
        value ^= static_cast<unsigned char>(each);
        for (int bit = 0; bit < 8; ++bit) {
            value = (value >> 1U) ^ ((value & 1U) != 0 ? 0xedb88320U : 0U);
        }
    }
    return ~value;
}

std::string withCheck(const std::string& text) {
    char check[16];
    std::snprintf(check, sizeof check, "%08lx", static_cast<unsigned long>(checksum(text)));
    return text + " check=" + check + '\n';
}

/// The character behind `key`; a space when the key is not there.
char valueOf(std::string_view text, std::string_view key) {
    const std::size_t at = text.find(key);
    return at == std::string_view::npos || at + key.size() >= text.size() ? ' '
                                                                          : text[at + key.size()];
}

Bank bankOf(char letter) {
    return letter == 'a' ? Bank::eA : letter == 'b' ? Bank::eB : Bank::eNone;
}

}  // namespace

std::string BootMarker::text() const {
    std::string all = "VIREO-BOOT 1 bank=";
    all += static_cast<char>(bank);
    all += isTrial ? " state=trial" : " state=confirmed";
    all += " starts=" + std::to_string(starts) + " fallback=";
    all += static_cast<char>(fallback);
    all += " failed=";
    all += static_cast<char>(failed);
    return withCheck(all);
}

std::optional<BootMarker> BootMarker::parse(std::string_view text) {
    BootMarker marker;
    marker.bank = bankOf(valueOf(text, " bank="));
    marker.isTrial = valueOf(text, " state=") == 't';
    const char starts = valueOf(text, " starts=");
    marker.starts = starts >= '0' && starts <= '9' ? static_cast<unsigned>(starts - '0') : 0U;
    marker.fallback = bankOf(valueOf(text, " fallback="));
    marker.failed = bankOf(valueOf(text, " failed="));
    return marker.text() == text ? std::optional(marker) : std::nullopt;
}

}  // namespace vireo
