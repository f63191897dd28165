#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "image/SoftwareVersion.h"

namespace vireo {

using Sha256Digest = std::array<unsigned char, 32>;
using SignatureKeyId = std::array<unsigned char, 16>;
using Ed25519Signature = std::array<unsigned char, 64>;

/// The first bytes of a software image. Numbers are big-endian, texts are filled up with zeros:
///
///     at  bytes
///      0      8  magic "VIREOIMG"
///      8      2  format version, 1
///     10      2  size of the header, 256
///     12      4  zero
///     16      8  software version, four numbers
///     24      8  payload size: all that follows the header
///     32     64  hardware variant
///     96     32  SHA-256 of the payload
///    128     16  key id
///    144     48  zero
///    192     64  Ed25519 signature of all bytes before it
struct ImageHeader {
    static constexpr std::size_t kSize = 256;
    static constexpr std::size_t kSignedSize = 192;
    static constexpr std::size_t kLongestVariant = 64;
    static constexpr std::uint16_t kFormatVersion = 1;
    /// Far from where sums overflow.
    static constexpr std::uint64_t kLargestPayload = std::uint64_t{1} << 56U;

    using Bytes = std::array<unsigned char, kSize>;

    SoftwareVersion version;
    std::uint64_t payloadSize = 0;
    std::string hardwareVariant;
    Sha256Digest payloadDigest{};
    SignatureKeyId keyId{};
    Ed25519Signature signature{};  ///< all zeros: not signed

    std::uint64_t fileSize() const { return kSize + payloadSize; }
    bool isSigned() const { return signature != Ed25519Signature{}; }

    /// Letters, digits, '.', '_' and '-', one to 64 of them.
    static bool isVariant(const std::string& text);

    /// What `decode` takes. The variant is one.
    Bytes encode() const;
    /// Nothing, with a `reason` that names the field, when it is no such header. The digest, the
    /// key and the signature can be any. One header has one form: `encode` gives the same bytes.
    static std::optional<ImageHeader> decode(const Bytes& bytes, std::string& reason);

    friend bool operator==(const ImageHeader&, const ImageHeader&) = default;
};

}  // namespace vireo
