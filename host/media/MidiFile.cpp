#include "media/MidiFile.h"

#include "media/FileBytes.h"

namespace vireo {
namespace {

constexpr std::uint64_t kChunkHead = 8;
constexpr std::uint64_t kLeastHeader = 6;
constexpr std::uint16_t kHighestFormat = 2;

}  // namespace

bool MidiFile::isOne(int file) {
    return FileBytes(file).hasText(0, "MThd");
}

bool MidiFile::isComplete(int file) {
    const FileBytes bytes(file);
    const std::uint64_t header = bytes.bigEndian(4, 4);
    const std::uint64_t format = bytes.bigEndian(8, 2);
    const std::uint64_t tracks = bytes.bigEndian(10, 2);
    const std::uint64_t division = bytes.bigEndian(12, 2);
    if (!isOne(file) || header < kLeastHeader || format > kHighestFormat || tracks == 0 ||
        division == 0 || (format == 0 && tracks != 1)) {
        return false;
    }
    std::uint64_t found = 0;
    std::uint64_t at = kChunkHead + header;
    // Chunks of other kinds may stand between the tracks.
    while (found < tracks && bytes.holds(at, kChunkHead)) {
        const std::uint64_t length = bytes.bigEndian(at + 4, 4);
        found += bytes.hasText(at, "MTrk") && bytes.holds(at + kChunkHead, length) ? 1U : 0U;
        at += kChunkHead + length;
    }
    return found == tracks;
}

}  // namespace vireo
