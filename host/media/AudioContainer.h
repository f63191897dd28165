#pragma once

#include <cstdint>

namespace vireo {

/// What a file with sound says about its own length. Decoders take a file that was cut short for a
/// shorter one in many formats, so it has to be seen from the outside.
class AudioContainer {
public:
    /// False when the headers of a WAVE, AIFF, AU or Ogg file announce more than there is. An
    /// unknown length, as programs write that cannot go back, lasts to the end of the file. Files
    /// of other formats count as whole: their decoders notice.
    static bool isWhole(int file);
    /// Whether an MPEG file announces how many frames it has. Otherwise decoders guess.
    static bool announcesMpegFrames(int file);
};

}  // namespace vireo
