#include "services/SndfileMediaControl.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>

#include <array>
#include <memory>

#include "media/AudioContainer.h"
#include "media/MidiFile.h"
#include "messages/FileDescriptor.h"

namespace vireo {
namespace {

struct SoundCloser {
    void operator()(SNDFILE* sound) const { ::sf_close(sound); }
};
using Sound = std::unique_ptr<SNDFILE, SoundCloser>;

constexpr sf_count_t kUnknownFrames = SF_COUNT_MAX;
constexpr sf_count_t kSamplesAtOnce = 8192;

/// The formats of which a file that was cut short can be told from a whole one.
bool isKnownFormat(int format) {
    switch (static_cast<unsigned>(format) & SF_FORMAT_TYPEMASK) {
        case SF_FORMAT_WAV:
        case SF_FORMAT_WAVEX:
        case SF_FORMAT_AIFF:
        case SF_FORMAT_AU:
        case SF_FORMAT_FLAC:
        case SF_FORMAT_OGG:
        case SF_FORMAT_MPEG:
            return true;
        default:
            return false;
    }
}

sf_count_t decodedFrames(SNDFILE* sound, int channels) {
    std::array<float, kSamplesAtOnce> samples{};
    const sf_count_t framesAtOnce = kSamplesAtOnce / channels;
    sf_count_t all = 0;
    for (sf_count_t count = framesAtOnce; count > 0; all += count) {
        count = ::sf_readf_float(sound, samples.data(), framesAtOnce);
    }
    return all;
}

}  // namespace

int SndfileMediaControl::checkAudioFile(eAudioKind /*kind*/, const std::string& fullPath) {
    // Non-blocking, so that a named pipe is refused instead of waited for.
    const FileDescriptor file(::open(fullPath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return kUnreadable;
    }
    const bool isGood = MidiFile::isOne(file.get())
                            ? MidiFile::isComplete(file.get())
                            : AudioContainer::isWhole(file.get()) && isPlayable(file.get());
    return isGood ? kUsable : kUnusable;
}

bool SndfileMediaControl::isPlayable(int file) {
    SF_INFO info{};
    Sound sound;
    {
        const std::lock_guard lock(m_opening);
        sound.reset(::sf_open_fd(file, SFM_READ, &info, SF_FALSE));
    }
    if (!sound || !isKnownFormat(info.format) || info.channels < 1 ||
        info.channels > kSamplesAtOnce || info.frames < 1 || info.frames == kUnknownFrames) {
        return false;
    }
    const bool isMpeg = (static_cast<unsigned>(info.format) & SF_FORMAT_TYPEMASK) == SF_FORMAT_MPEG;
    const bool isGuess = isMpeg && !AudioContainer::announcesMpegFrames(file);
    const sf_count_t decoded = decodedFrames(sound.get(), info.channels);
    return ::sf_error(sound.get()) == SF_ERR_NO_ERROR &&
           (isGuess ? decoded > 0 : decoded == info.frames);
}

}  // namespace vireo
