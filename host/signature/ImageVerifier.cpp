#include "signature/ImageVerifier.h"

#include <span>
#include <vector>

#include "signature/Sha256.h"

namespace vireo {
namespace {

std::string findSignatureFault(const ImageFile& image, const TrustedKeys& keys) {
    const ImageHeader& header = image.header();
    if (!header.isSigned()) {
        return "it is not signed";
    }
    if (keys.isEmpty()) {
        return "it cannot be trusted: this phone has no trusted key";
    }
    const PublicKey* const key = keys.find(header.keyId);
    if (key == nullptr) {
        return "its key id " + textOf(header.keyId) + " is none of the trusted keys";
    }
    // Of the bytes as they came, not of what was understood of them.
    return key->verifies(std::span(image.headerBytes()).first(ImageHeader::kSignedSize),
                         header.signature)
               ? std::string()
               : "its signature does not fit its header";
}

}  // namespace

bool ImageVerifier::checkHeader(const ImageFile& image, const Demands& demands,
                                const TrustedKeys& keys, std::string& reason) {
    const ImageHeader& header = image.header();
    if (header.hardwareVariant != demands.hardwareVariant) {
        reason = "its hardware variant is \"" + header.hardwareVariant + "\", this phone is \"" +
                 demands.hardwareVariant + '"';
        return false;
    }
    reason = findSignatureFault(image, keys);
    if (!reason.empty()) {
        return false;
    }
    if (demands.oldestVersion && header.version < *demands.oldestVersion) {
        reason = "its software version " + header.version.text() + " is older than " +
                 demands.oldestVersion->text() + ", and downgrades are not allowed";
        return false;
    }
    if (header.fileSize() > demands.room) {
        reason = "its payload size is " + std::to_string(header.payloadSize) +
                 ", and the flash memory has room for " + std::to_string(demands.room) +
                 " bytes with the header";
        return false;
    }
    return true;
}

bool ImageVerifier::checkPayload(const ImageFile& image, std::string& reason) {
    std::vector<unsigned char> block(kBlock);
    Sha256 sha;
    for (std::uint64_t at = 0; at < image.header().payloadSize;) {
        const std::size_t count = image.readPayload(at, block);
        sha.add(std::span(block).first(count));
        at += count;
    }
    if (sha.finish() != image.header().payloadDigest) {
        reason = wrongDigest();
        return false;
    }
    return true;
}

}  // namespace vireo
