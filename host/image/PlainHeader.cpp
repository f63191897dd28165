#include "image/PlainHeader.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <limits>
#include <string_view>
#include <system_error>

namespace vireo {
namespace {

constexpr std::string_view kMagic = "VIREO-IMAGE 1 ";
// Far from where sums overflow.
constexpr std::uint64_t kLargestPayload = std::numeric_limits<std::int64_t>::max() / 128;

}  // namespace

bool PlainHeader::isVariant(const std::string& text) {
    return !text.empty() && text.size() <= kLongestVariant &&
           std::all_of(text.begin(), text.end(), [](unsigned char each) {
               return each < 0x80U &&
                      (std::isalnum(each) != 0 || each == '.' || each == '_' || each == '-');
           });
}

std::optional<PlainHeader> PlainHeader::read(int file, std::string& reason) {
    std::array<char, kLongest> bytes{};
    const ssize_t count = ::pread(file, bytes.data(), bytes.size(), 0);
    if (count < 0) {
        reason = std::generic_category().message(errno);
        return std::nullopt;
    }
    const std::string_view begin(bytes.data(), static_cast<std::size_t>(count));
    const std::size_t end = begin.find('\n');
    if (!begin.starts_with(kMagic) || end == std::string_view::npos) {
        reason = "it is no software image";
        return std::nullopt;
    }
    const std::string_view fields = begin.substr(kMagic.size(), end - kMagic.size());
    const std::size_t blank = std::min(fields.find(' '), fields.size());
    const std::string_view size = fields.substr(std::min(blank + 1, fields.size()));
    PlainHeader header;
    header.length = end + 1;
    header.hardwareVariant = fields.substr(0, blank);
    const auto [stop, failure] =
        std::from_chars(size.data(), size.data() + size.size(), header.payloadSize);
    if (!isVariant(header.hardwareVariant)) {
        reason = "its header has no hardware variant";
    } else if (failure != std::errc() || stop != size.data() + size.size() ||
               header.payloadSize > kLargestPayload) {
        reason = "its header has no size";
    } else {
        return header;
    }
    return std::nullopt;
}

}  // namespace vireo
