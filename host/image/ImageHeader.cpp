#include "image/ImageHeader.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace vireo {
namespace {

constexpr std::string_view kMagic = "VIREOIMG";

constexpr std::size_t kMagicAt = 0;
constexpr std::size_t kFormatVersionAt = 8;
constexpr std::size_t kHeaderSizeAt = 10;
constexpr std::size_t kFirstGapAt = 12;
constexpr std::size_t kVersionAt = 16;
constexpr std::size_t kPayloadSizeAt = 24;
constexpr std::size_t kVariantAt = 32;
constexpr std::size_t kDigestAt = 96;
constexpr std::size_t kKeyIdAt = 128;
constexpr std::size_t kSecondGapAt = 144;
constexpr std::size_t kSignatureAt = ImageHeader::kSignedSize;

/// Byte by byte, so that it is the same on every processor.
template <class Number>
Number numberAt(const ImageHeader::Bytes& bytes, std::size_t at) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
        value = (value << 8U) | bytes[at + i];
    }
    return static_cast<Number>(value);
}

template <class Number>
void putNumber(ImageHeader::Bytes& bytes, std::size_t at, Number number) {
    std::uint64_t left = number;
    for (std::size_t i = sizeof(Number); i-- > 0; left >>= 8U) {
        bytes[at + i] = static_cast<unsigned char>(left & 0xffU);
    }
}

template <class Array>
void take(const ImageHeader::Bytes& bytes, std::size_t at, Array& into) {
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), into.size(), into.begin());
}

template <class Sequence>
void put(ImageHeader::Bytes& bytes, std::size_t at, const Sequence& from) {
    std::copy(from.begin(), from.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

bool isZero(const ImageHeader::Bytes& bytes, std::size_t from, std::size_t to) {
    return std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                       bytes.begin() + static_cast<std::ptrdiff_t>(to),
                       [](unsigned char each) { return each == 0; });
}

/// The text without the zeros behind it; zeros inside stay and make it no variant.
std::string variantAt(const ImageHeader::Bytes& bytes) {
    std::array<char, ImageHeader::kLongestVariant> field{};
    std::transform(bytes.begin() + kVariantAt, bytes.begin() + kDigestAt, field.begin(),
                   [](unsigned char each) { return static_cast<char>(each); });
    const std::string_view text(field.data(), field.size());
    return std::string(text.substr(0, text.find_last_not_of('\0') + 1));
}

/// What is wrong with the fields that have one value; empty when nothing is.
std::string findFixedFault(const ImageHeader::Bytes& bytes) {
    if (!std::equal(kMagic.begin(), kMagic.end(), bytes.begin() + kMagicAt,
                    [](char a, unsigned char b) { return static_cast<unsigned char>(a) == b; })) {
        return "it is no software image: its magic is another one";
    }
    const auto format = numberAt<std::uint16_t>(bytes, kFormatVersionAt);
    if (format != ImageHeader::kFormatVersion) {
        return "its format version is " + std::to_string(format) + ", known is " +
               std::to_string(ImageHeader::kFormatVersion);
    }
    const auto size = numberAt<std::uint16_t>(bytes, kHeaderSizeAt);
    if (size != ImageHeader::kSize) {
        return "its header size is " + std::to_string(size) + " instead of " +
               std::to_string(ImageHeader::kSize);
    }
    if (!isZero(bytes, kFirstGapAt, kVersionAt) || !isZero(bytes, kSecondGapAt, kSignatureAt)) {
        return "its reserved bytes are not zero";
    }
    return {};
}

}  // namespace

bool ImageHeader::isVariant(const std::string& text) {
    return !text.empty() && text.size() <= kLongestVariant &&
           std::all_of(text.begin(), text.end(), [](unsigned char each) {
               return each < 0x80U &&
                      (std::isalnum(each) != 0 || each == '.' || each == '_' || each == '-');
           });
}

ImageHeader::Bytes ImageHeader::encode() const {
    Bytes bytes{};
    put(bytes, kMagicAt, kMagic);
    putNumber(bytes, kFormatVersionAt, kFormatVersion);
    putNumber(bytes, kHeaderSizeAt, static_cast<std::uint16_t>(kSize));
    for (std::size_t i = 0; i < version.numbers.size(); ++i) {
        putNumber(bytes, kVersionAt + (i * sizeof version.numbers[i]), version.numbers[i]);
    }
    putNumber(bytes, kPayloadSizeAt, payloadSize);
    put(bytes, kVariantAt, hardwareVariant.substr(0, kLongestVariant));
    put(bytes, kDigestAt, payloadDigest);
    put(bytes, kKeyIdAt, keyId);
    put(bytes, kSignatureAt, signature);
    return bytes;
}

std::optional<ImageHeader> ImageHeader::decode(const Bytes& bytes, std::string& reason) {
    reason = findFixedFault(bytes);
    if (!reason.empty()) {
        return std::nullopt;
    }
    ImageHeader header;
    for (std::size_t i = 0; i < header.version.numbers.size(); ++i) {
        header.version.numbers[i] =
            numberAt<std::uint16_t>(bytes, kVersionAt + (i * sizeof(std::uint16_t)));
    }
    header.payloadSize = numberAt<std::uint64_t>(bytes, kPayloadSizeAt);
    header.hardwareVariant = variantAt(bytes);
    take(bytes, kDigestAt, header.payloadDigest);
    take(bytes, kKeyIdAt, header.keyId);
    take(bytes, kSignatureAt, header.signature);
    if (!isVariant(header.hardwareVariant)) {
        reason = "its hardware variant is no text of letters, digits, '.', '_' and '-'";
    } else if (header.payloadSize == 0) {
        reason = "its payload size is zero: there is nothing in it";
    } else if (header.payloadSize > kLargestPayload) {
        reason = "its payload size is " + std::to_string(header.payloadSize) +
                 ", which no file can have";
    } else {
        return header;
    }
    return std::nullopt;
}

}  // namespace vireo
