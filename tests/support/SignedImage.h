#pragma once

#include <span>
#include <string>

#include "signature/Sha256.h"
#include "signature/SignatureKey.h"
#include "support/ImageBytes.h"

namespace vireo::test {

/// The key with a number, the same in every run.
inline PrivateKey keyNumber(unsigned char number) {
    PrivateKey::Seed seed{};
    seed.fill(number);
    return PrivateKey::fromSeed(seed);
}

/// The header of an image with this payload, not signed yet.
inline ImageHeader headerOf(const std::string& payload, const std::string& version = "2.0.0",
                            const std::string& variant = "desk-1") {
    ImageHeader header;
    header.version = *SoftwareVersion::parse(version);
    header.hardwareVariant = variant;
    header.payloadSize = payload.size();
    header.payloadDigest = Sha256::of(
        std::span(reinterpret_cast<const unsigned char*>(payload.data()), payload.size()));
    return header;
}

/// A whole image. The header is signed as it is, whatever is in it.
inline std::string signedImage(ImageHeader header, const std::string& payload,
                               const PrivateKey& key = keyNumber(1)) {
    key.sign(header);
    return textOfBytes(header.encode()) + payload;
}

inline std::string signedImage(const std::string& payload, const std::string& version = "2.0.0") {
    return signedImage(headerOf(payload, version), payload);
}

}  // namespace vireo::test
