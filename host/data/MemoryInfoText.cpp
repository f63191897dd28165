// The text form of MemoryInfo, for the service and for its clients.
#include <charconv>
#include <system_error>

#include "device/MemoryInfo.h"
#include "service/Serializer.h"

namespace vireo {
namespace {

bool takeNumber(std::string_view& text, std::uint64_t& number) {
    std::string_view digits;
    if (!Serializer::deserialize(text, digits)) {
        return false;
    }
    const char* const end = digits.data() + digits.size();
    const auto [next, error] = std::from_chars(digits.data(), end, number);
    return error == std::errc() && next == end;
}

}  // namespace

std::string MemoryInfo::serialize() const {
    std::string text;
    Serializer::serialize(text, std::to_string(m_totalBytes));
    Serializer::serialize(text, std::to_string(m_freeBytes));
    return text;
}

bool MemoryInfo::deserialize(const std::string& text) {
    std::string_view rest(text);
    MemoryInfo read;
    if (!takeNumber(rest, read.m_totalBytes) || !takeNumber(rest, read.m_freeBytes) ||
        !rest.empty()) {
        return false;
    }
    *this = read;
    return true;
}

}  // namespace vireo
