#pragma once

#include <string>
#include <string_view>

#include "messages/FileDescriptor.h"
#include "messages/FrameCodec.h"

namespace vireo::bench {

/// A peer that writes and reads frames as they are: many requests in one write, many connections
/// in one process.
class WirePeer {
public:
    WirePeer(const std::string& socketPath, std::string_view channel);

    /// A whole request for the service.
    static std::string request(std::string_view payload);
    /// Writes all of it.
    void send(std::string_view bytes);
    /// The payload of the next frame, whose kind must be this one. Valid until the next call.
    std::string_view receive(FrameKind kind);

    int descriptor() const { return m_socket.get(); }

private:
    bool take(std::string_view& payload, FrameKind& kind);

    FileDescriptor m_socket;
    std::string m_input;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
};

}  // namespace vireo::bench
