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
    /// Peers that may wait to be accepted.
    int backlog = 128;
    /// How soon peers are accepted again after the machine had no means for one more.
    int acceptPauseMs = 100;
};

}  // namespace vireo
