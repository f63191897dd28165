#include "media/AudioContainer.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "media/FileBytes.h"

namespace vireo {
namespace {

constexpr std::uint64_t kUnknownLength = 0xFFFFFFFFU;
constexpr std::uint64_t kLongestOggPage = 27 + 255 + 255 * 255;
constexpr unsigned kLastOggPage = 4;

enum class Order { eLittleEndian, eBigEndian };

/// Whether the chunk with the sound is there in full. Chunks are padded to an even length.
bool holdsChunk(const FileBytes& bytes, std::string_view wanted, Order order) {
    std::uint64_t at = 12;
    while (bytes.holds(at, 8)) {
        const std::uint64_t length = order == Order::eLittleEndian ? bytes.littleEndian(at + 4, 4)
                                                                   : bytes.bigEndian(at + 4, 4);
        if (bytes.hasText(at, wanted)) {
            return length == kUnknownLength || bytes.holds(at + 8, length);
        }
        at += 8 + length + length % 2;
    }
    return false;
}

bool holdsAuData(const FileBytes& bytes) {
    const std::uint64_t length = bytes.bigEndian(8, 4);
    return length == kUnknownLength || bytes.holds(bytes.bigEndian(4, 4), length);
}

/// The last page of a whole file bears a mark.
bool hasLastOggPage(const FileBytes& bytes) {
    const std::uint64_t count = std::min(bytes.size(), kLongestOggPage);
    const std::string tail = bytes.text(bytes.size() - count, count);
    const std::size_t page = tail.rfind("OggS");
    return page != std::string::npos && page + 5 < tail.size() &&
           (static_cast<unsigned char>(tail[page + 5]) & kLastOggPage) != 0;
}

/// Where the sound begins behind an ID3 tag, whose length has 7 bits in each byte.
std::uint64_t mpegStart(const FileBytes& bytes) {
    if (!bytes.hasText(0, "ID3")) {
        return 0;
    }
    std::uint64_t length = 0;
    for (std::uint64_t at = 6; at < 10; ++at) {
        length = length << 7U | (bytes.bigEndian(at, 1) & 0x7FU);
    }
    return 10 + length;
}

}  // namespace

bool AudioContainer::isWhole(int file) {
    const FileBytes bytes(file);
    if (bytes.hasText(0, "RIFF")) {
        return holdsChunk(bytes, "data", Order::eLittleEndian);
    }
    if (bytes.hasText(0, "RIFX")) {
        return holdsChunk(bytes, "data", Order::eBigEndian);
    }
    if (bytes.hasText(0, "FORM")) {
        return holdsChunk(bytes, "SSND", Order::eBigEndian);
    }
    if (bytes.hasText(0, ".snd")) {
        return holdsAuData(bytes);
    }
    return !bytes.hasText(0, "OggS") || hasLastOggPage(bytes);
}

bool AudioContainer::announcesMpegFrames(int file) {
    const FileBytes bytes(file);
    const std::uint64_t start = mpegStart(bytes);
    // The place depends on the version and the number of channels.
    for (const std::uint64_t offset : {13U, 21U, 36U}) {
        for (const std::string_view mark : {"Xing", "Info", "VBRI"}) {
            if (bytes.hasText(start + offset, mark)) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace vireo
