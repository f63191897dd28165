#pragma once

namespace vireo {

/// Files of the Standard MIDI File format.
class MidiFile {
public:
    /// Whether the file begins as MIDI files do.
    static bool isOne(int file);
    /// Whether its header is right and all the tracks that it announces are there in full. What the
    /// tracks say is not looked at.
    static bool isComplete(int file);
};

}  // namespace vireo
