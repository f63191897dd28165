#pragma once

#include <cstddef>
#include <cstdint>

#include "messages/FrameCodec.h"

namespace vireo {

/// What the message loop allows its peers.
struct MessageLimits {
    std::size_t maximumPeers = 1024;
    /// The longest payload that is taken, in bytes; at most what a frame can have.
    std::uint32_t maximumRequest = FrameCodec::kMaximumPayload;
    /// More unsent bytes than this, and a connection's requests wait.
    std::size_t maximumUnsent = 1U << 20U;
    /// More bytes than this that wait for a peer, notifications among them, and it is disconnected.
    std::size_t maximumQueued = 16U << 20U;
    /// Frames of one peer that are handled before the others have a turn. A write costs a commit to
    /// the disk, some milliseconds, so this is about how long one flooding peer holds up the rest;
    /// much fewer would write replies out in many small pieces.
    std::size_t framesInTurn = 32;
    /// How long the service waits for a peer's answer.
    int answerTimeoutMs = 5000;
    /// Peers that may wait to be accepted.
    int backlog = 128;
    /// How soon peers are accepted again after the machine had no means for one more.
    int acceptPauseMs = 100;
};

}  // namespace vireo
