#include "ImageCommands.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "NewFile.h"
#include "files/SmallFile.h"
#include "image/ImageFile.h"
#include "signature/ImageVerifier.h"
#include "signature/Sha256.h"
#include "signature/SignatureKey.h"
#include "signature/TrustedKeys.h"

namespace vireo {
namespace {

constexpr mode_t kForOwner = 0600;
constexpr mode_t kForAll = 0666;  // less what the umask takes

[[noreturn]] void fail(const std::string& text) {
    throw std::runtime_error(text);
}

PrivateKey readPrivateKey(const std::string& path) {
    std::string text;
    std::string error;
    if (!SmallFile::read(path, TrustedKeys::kLargestFile, text, error,
                         SmallFile::Readers::eOwnerAlone)) {
        fail("--key: " + error);
    }
    std::optional<PrivateKey> key = PrivateKey::fromPem(text, error);
    if (!key) {
        fail("--key: cannot use " + path + ": " + error);
    }
    return std::move(*key);
}

PublicKey readPublicKey(const std::string& path) {
    std::string text;
    std::string error;
    if (!SmallFile::read(path, TrustedKeys::kLargestFile, text, error)) {
        fail("--key: " + error);
    }
    std::optional<PublicKey> key = PublicKey::fromPem(text, error);
    if (!key) {
        fail("--key: cannot use " + path + ": " + error);
    }
    return std::move(*key);
}

ImageFile openImage(const std::string& path) {
    std::string reason;
    std::optional<ImageFile> image = ImageFile::open(path, reason);
    if (!image) {
        fail("cannot use the image " + path + ": " + reason);
    }
    return std::move(*image);
}

/// The payload of an image, from whatever `next` reads it; the digest of what was copied.
template <class Next>
std::pair<std::uint64_t, Sha256Digest> copyPayload(const NewFile& into, const Next& next) {
    std::vector<unsigned char> block(ImageVerifier::kBlock);
    Sha256 sha;
    std::uint64_t size = 0;
    while (const std::size_t count = next(size, std::span(block))) {
        const auto read = std::span<const unsigned char>(block).first(count);
        sha.add(read);
        into.append(read);
        size += count;
    }
    return {size, sha.finish()};
}

std::size_t readBlock(const FileDescriptor& file, const std::string& path,
                      std::span<unsigned char> block) {
    ssize_t count = -1;
    do {
        count = ::read(file.get(), block.data(), block.size());
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        fail("cannot read the payload " + path + ": " + std::generic_category().message(errno));
    }
    return static_cast<std::size_t>(count);
}

}  // namespace

void ImageCommands::keygen(const std::string& name) {
    const std::string secretFile = name + "-private.pem";
    const std::string openFile = name + ".pem";
    for (const std::string& path : {secretFile, openFile}) {
        if (std::filesystem::exists(std::filesystem::symlink_status(path))) {
            fail(path + " is there already: no key is overwritten");
        }
    }
    const PrivateKey key = PrivateKey::generate();
    NewFile secret(secretFile, kForOwner);
    secret.append(key.pem());
    NewFile open(openFile, kForAll);
    open.append(key.publicKey().pem());
    secret.keep(NewFile::Existing::eRefuse);
    open.keep(NewFile::Existing::eRefuse);
    m_out << "private key: " << secretFile << " (keep it secret)\npublic key: " << openFile
          << " (for the phones)\nkey id: " << textOf(key.publicKey().id()) << '\n';
}

void ImageCommands::create(const Recipe& recipe) {
    // The key first: nobody wants to learn at the end that it cannot be used.
    std::optional<PrivateKey> key;
    if (!recipe.keyFile.empty()) {
        key = readPrivateKey(recipe.keyFile);
    }
    const FileDescriptor payload(::open(recipe.payloadFile.c_str(), O_RDONLY | O_CLOEXEC));
    if (!payload) {
        fail("cannot read the payload " + recipe.payloadFile + ": " +
             std::generic_category().message(errno));
    }
    NewFile image(recipe.imageFile, kForAll);
    image.append(ImageHeader::Bytes{});
    ImageHeader header;
    header.version = recipe.version;
    header.hardwareVariant = recipe.hardwareVariant;
    std::tie(header.payloadSize, header.payloadDigest) =
        copyPayload(image, [&](std::uint64_t /*offset*/, std::span<unsigned char> block) {
            return readBlock(payload, recipe.payloadFile, block);
        });
    if (header.payloadSize == 0) {
        fail("the payload " + recipe.payloadFile + " is empty");
    }
    if (key) {
        key->sign(header);
    }
    image.put(header.encode(), 0);
    image.keep(NewFile::Existing::eReplace);
    m_out << recipe.imageFile << ": " << header.version.text() << " for " << header.hardwareVariant
          << ", " << header.fileSize() << " bytes, "
          << (key ? "signed with key " + textOf(header.keyId) : "not signed") << '\n';
}

void ImageCommands::sign(const std::string& keyFile, const std::string& imageFile) {
    const PrivateKey key = readPrivateKey(keyFile);
    const ImageFile image = openImage(imageFile);
    ImageHeader header = image.header();
    key.sign(header);
    NewFile signedImage(imageFile, kForAll);
    signedImage.append(header.encode());
    const auto [size, digest] =
        copyPayload(signedImage, [&](std::uint64_t offset, std::span<unsigned char> block) {
            return image.readPayload(offset, block);
        });
    if (digest != header.payloadDigest) {
        fail("cannot sign the image " + imageFile +
             ": its payload is not the one that its header was made for");
    }
    signedImage.keep(NewFile::Existing::eReplace);
    m_out << imageFile << ": signed with key " << textOf(header.keyId) << '\n';
}

void ImageCommands::inspect(const std::string& imageFile) {
    const ImageFile image = openImage(imageFile);
    const ImageHeader& header = image.header();
    m_out << "format version: " << ImageHeader::kFormatVersion
          << "\nhardware variant: " << header.hardwareVariant
          << "\nsoftware version: " << header.version.text()
          << "\npayload size: " << header.payloadSize
          << "\npayload sha-256: " << textOf(header.payloadDigest)
          << "\nkey id: " << (header.isSigned() ? textOf(header.keyId) : "none: it is not signed")
          << "\nsignature: "
          << (header.isSigned() ? textOf(header.signature) : "none: it is not signed") << '\n';
}

void ImageCommands::verify(const Standard& standard, const std::string& imageFile) {
    TrustedKeys keys =
        standard.keyDirectory.empty() ? TrustedKeys() : TrustedKeys(standard.keyDirectory);
    for (const std::string& path : standard.keyFiles) {
        keys.add(readPublicKey(path));
    }
    if (keys.isEmpty()) {
        fail("--keys: there is no key in " + standard.keyDirectory);
    }
    const ImageFile image = openImage(imageFile);
    ImageVerifier::Demands demands;
    demands.hardwareVariant = standard.hardwareVariant.empty() ? image.header().hardwareVariant
                                                               : standard.hardwareVariant;
    demands.oldestVersion = standard.oldestVersion;
    std::string reason;
    if (!ImageVerifier::checkHeader(image, demands, keys, reason) ||
        !ImageVerifier::checkPayload(image, reason)) {
        fail("cannot use the image " + imageFile + ": " + reason);
    }
    m_out << imageFile << ": good: " << image.header().version.text() << " for "
          << image.header().hardwareVariant << ", signed with key " << textOf(image.header().keyId)
          << '\n';
}

}  // namespace vireo
