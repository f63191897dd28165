#pragma once

#include <mutex>

#include "service/Executable.h"
#include "services/MediaControlServiceIfc.h"

namespace vireo {

/// Says what can be played by decoding it: WAVE, AIFF, AU, FLAC, Ogg and MPEG files to their last
/// frame, which has to be the one that they announce; of MIDI files the frame alone. An MPEG file
/// that announces no number of frames, as old programs wrote them, may be cut without being found
/// out. Both kinds of sound are played alike. Needs little memory whatever the file; takes the time
/// of decoding it.
class SndfileMediaControl : public MediaControlServiceIfc, public Executable {
public:
    static constexpr int kUsable = 0;
    static constexpr int kUnusable = 1;
    static constexpr int kUnreadable = 2;

    int checkAudioFile(eAudioKind kind, const std::string& fullPath) override;

private:
    bool isPlayable(int file);

    std::mutex m_opening;  ///< the decoder notes faults of opening for the whole process
};

}  // namespace vireo
