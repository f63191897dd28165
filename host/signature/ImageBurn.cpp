#include "signature/ImageBurn.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <span>
#include <string>

#include "device/StorageError.h"
#include "log/Log.h"
#include "signature/ImageVerifier.h"
#include "signature/Sha256.h"
#include "signature/SideThread.h"

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

/// By turns: the next one can be filled while the last one is still being looked at.
class TwoBlocks {
public:
    /// For what begins there in the payload. Blocks of the file are whole ones, the first one with
    /// the header: the disk has pages.
    std::span<unsigned char> next(std::uint64_t at) {
        m_turn = 1 - m_turn;
        const std::span<unsigned char> block(m_blocks[m_turn]);
        return block.first(block.size() - ((ImageHeader::kSize + at) % block.size()));
    }

private:
    std::array<std::vector<unsigned char>, 2> m_blocks{
        std::vector<unsigned char>(ImageVerifier::kBlock),
        std::vector<unsigned char>(ImageVerifier::kBlock)};
    std::size_t m_turn = 0;
};

void require(bool isSame) {
    if (!isSame) {
        throw StorageError("what comes back from the flash memory is not the image");
    }
}

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
    Sha256 sha;
    TwoBlocks blocks;
    SideThread digesting;
    for (std::uint64_t at = 0; at < image.header().payloadSize;) {
        const std::span<unsigned char> block = blocks.next(at);
        const std::size_t count = image.readPayload(at, block);
        const std::span<const unsigned char> bytes = block.first(count);
        digesting.start([&sha, bytes] { sha.add(bytes); });
        m_flash.write(file.get(), ImageHeader::kSize + at, bytes);
        at += count;
        advance(count);
    }
    digesting.finish();
    if (sha.finish() != image.header().payloadDigest) {
        throw StorageError("the image has changed meanwhile: " + ImageVerifier::wrongDigest());
    }
}

/// What was written had the right digest, so it is enough that the same comes back.
void ImageBurn::readBack(const ImageFile& image, const FlashFile& file) {
    ImageHeader::Bytes header{};
    require(m_flash.size(file.get()) == image.header().fileSize() &&
            m_flash.read(file.get(), 0, header) == header.size() && header == image.headerBytes());
    std::vector<unsigned char> written(ImageVerifier::kBlock);
    TwoBlocks blocks;
    SideThread comparing;
    for (std::uint64_t at = 0; at < image.header().payloadSize;) {
        const std::span<unsigned char> block = blocks.next(at);
        const std::size_t count = m_flash.read(file.get(), ImageHeader::kSize + at, block);
        require(count > 0);
        const std::span<const unsigned char> bytes = block.first(count);
        comparing.start([&image, &written, at, bytes] {
            const std::size_t read = image.readPayload(at, std::span(written).first(bytes.size()));
            require(read == bytes.size() &&
                    std::memcmp(bytes.data(), written.data(), bytes.size()) == 0);
        });
        at += count;
        advance(count);
    }
    comparing.finish();
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
