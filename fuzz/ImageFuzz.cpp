#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <span>
#include <string>

#include "Fuzz.h"
#include "signature/ImageVerifier.h"
#include "signature/Sha256.h"

namespace vireo::fuzz {
namespace {

constexpr unsigned kSigns = 1;        ///< so that the check goes on behind the signature
constexpr unsigned kFitsDigest = 2;   ///< likewise
constexpr unsigned kFitsVariant = 4;  ///< likewise

const PrivateKey& key() {
    static const PrivateKey one = PrivateKey::fromSeed({1});
    return one;
}

std::span<const unsigned char> bytesOf(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

/// Makes good what chance would never find. The rest of the header stays as it came.
void repair(std::string& image, unsigned choice) {
    if (image.size() < ImageHeader::kSize) {
        return;
    }
    ImageHeader::Bytes bytes{};
    std::copy_n(bytesOf(image).begin(), bytes.size(), bytes.begin());
    std::string reason;
    std::optional<ImageHeader> header = ImageHeader::decode(bytes, reason);
    if (!header) {
        return;
    }
    require(header->encode() == bytes, "a header has one form");
    if ((choice & kFitsVariant) != 0) {
        header->hardwareVariant = "desk-1";
    }
    if ((choice & kFitsDigest) != 0) {
        header->payloadDigest = Sha256::of(bytesOf(image).subspan(ImageHeader::kSize));
    }
    if ((choice & kSigns) != 0) {
        key().sign(*header);
    }
    const ImageHeader::Bytes repaired = header->encode();
    std::copy(repaired.begin(), repaired.end(), image.begin());
}

FileDescriptor fileOf(const std::string& content) {
    FileDescriptor file(::memfd_create("image", MFD_CLOEXEC));
    require(file && ::write(file.get(), content.data(), content.size()) ==
                        static_cast<ssize_t>(content.size()),
            "there is a file to check");
    return file;
}

}  // namespace

/// An image as it comes from a server, through the whole check.
void run(std::string_view input) {
    const unsigned choice = takeChoice(input);
    std::string content(input);
    repair(content, choice);
    TrustedKeys keys;
    keys.add(key().publicKey());
    ImageVerifier::Demands demands;
    demands.hardwareVariant = "desk-1";
    demands.oldestVersion = SoftwareVersion::parse("1.0");
    demands.room = 8000;
    std::string reason;
    const std::optional<ImageFile> opened = ImageFile::adopt(fileOf(content), reason);
    const bool isGood = opened && ImageVerifier::checkHeader(*opened, demands, keys, reason) &&
                        ImageVerifier::checkPayload(*opened, reason);
    require(isGood == reason.empty(), "what is refused is explained");
    if (!isGood) {
        return;
    }
    const ImageHeader& header = opened->header();
    require(header.fileSize() == content.size() && content.size() <= demands.room &&
                header.version >= *demands.oldestVersion,
            "what is taken is what was demanded");
    require(Sha256::of(bytesOf(content).subspan(ImageHeader::kSize)) == header.payloadDigest &&
                key().publicKey().verifies(bytesOf(content).first(ImageHeader::kSignedSize),
                                           header.signature),
            "what is taken was signed");
}

}  // namespace vireo::fuzz
