#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "messages/FrameCodec.h"

namespace vireo {

/// Frames that a peer has not taken yet, in order. Safe from every thread; nothing waits.
class OutputQueue {
public:
    void append(FrameKind kind, std::uint32_t correlation, std::string_view protocol,
                std::string_view interfaceName, std::string_view payload);
    /// Hands all that waits to `socket`, in one call. What it does not take stays. False when the
    /// connection is broken.
    bool flush(int socket);
    /// Bytes that wait.
    std::size_t unsent() const { return m_unsent.load(std::memory_order_relaxed); }

private:
    bool sendOnce(int socket);

    std::mutex m_mutex;
    std::string m_bytes;
    std::size_t m_sent = 0;  ///< how much of the front is out
    std::atomic<std::size_t> m_unsent{0};
};

}  // namespace vireo
