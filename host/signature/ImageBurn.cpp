#include "signature/ImageBurn.h"

#include <algorithm>
#include <exception>
#include <span>
#include <string>

#include "device/StorageError.h"
#include "log/Log.h"
#include "signature/ImageVerifier.h"
#include "signature/Sha256.h"

namespace vireo {
namespace {

constexpr int kMostPercent = 98;

/// Removes the new file unless it has become a bank's.
class Unfinished {
public:
    Unfinished(FlashPort& flash, std::string name) : m_flash(flash), m_name(std::move(name)) {}
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;
    ~Unfinished() {
        try {
            m_flash.remove(m_name);
        } catch (const std::exception& exception) {
            logExc("ImageBurn", "./host/signature/ImageBurn", __LINE__,
                   "what was burnt in vain stays until the next start", exception);
        }
    }

private:
    FlashPort& m_flash;
    std::string m_name;
};

}  // namespace

void ImageBurn::run(const ImageFile& image, Bank target, const Progress& progress) {
    m_progress = &progress;
    m_total = 2 * image.header().payloadSize;
    m_done = 0;
    m_reported = -1;
    advance(0);
    const std::string name = SoftwareBanks::newFile(target);
    const Unfinished unfinished(m_flash, name);
    {
        const FlashFile file(m_flash, m_flash.create(name));
        write(image, file);
        m_flash.sync(file.get());
        readBack(image, file);
    }
    m_banks.install(target, image.header());
}

void ImageBurn::write(const ImageFile& image, const FlashFile& file) {
    m_flash.write(file.get(), 0, image.headerBytes());
    std::vector<unsigned char> block(ImageVerifier::kBlock);
    Sha256 sha;
    for (std::uint64_t at = 0; at < image.header().payloadSize;) {
        const std::size_t count = image.readPayload(at, block);
        const auto bytes = std::span<const unsigned char>(block).first(count);
        m_flash.write(file.get(), ImageHeader::kSize + at, bytes);
        sha.add(bytes);  // the disk writes meanwhile
        at += count;
        advance(count);
    }
    if (sha.finish() != image.header().payloadDigest) {
        throw StorageError("the image has changed meanwhile: " + ImageVerifier::wrongDigest());
    }
}

void ImageBurn::readBack(const ImageFile& image, const FlashFile& file) {
    ImageHeader::Bytes bytes{};
    const bool hasHeader = m_flash.size(file.get()) == image.header().fileSize() &&
                           m_flash.read(file.get(), 0, bytes) == bytes.size() &&
                           bytes == image.headerBytes();
    std::vector<unsigned char> block(ImageVerifier::kBlock);
    Sha256 sha;
    for (std::uint64_t at = ImageHeader::kSize; hasHeader && at < image.header().fileSize();) {
        const std::size_t count = m_flash.read(file.get(), at, block);
        if (count == 0) {
            break;
        }
        sha.add(std::span(block).first(count));
        at += count;
        advance(count);
    }
    if (!hasHeader || sha.finish() != image.header().payloadDigest) {
        throw StorageError("the flash memory does not give back what was written to it");
    }
}

void ImageBurn::advance(std::size_t count) {
    if (m_stopping) {
        throw StorageError("the phone is being stopped");
    }
    m_done += count;
    const auto percent =
        m_done < m_total ? static_cast<int>(m_done * (kMostPercent + 1) / m_total) : kMostPercent;
    if (percent != m_reported) {
        m_reported = percent;
        (*m_progress)(percent);
    }
}

bool ImageBurn::isPayloadWhole(FlashPort& flash, FlashPort::File file, const ImageHeader& header) {
    std::vector<unsigned char> block(ImageVerifier::kBlock);
    Sha256 sha;
    for (std::uint64_t at = ImageHeader::kSize; at < header.fileSize();) {
        const std::size_t count = flash.read(file, at, block);
        if (count == 0) {
            return false;
        }
        sha.add(std::span(block).first(count));
        at += count;
    }
    return sha.finish() == header.payloadDigest;
}

}  // namespace vireo
