#pragma once

#include <string>
#include <string_view>

#include "messages/FrameCodec.h"

namespace vireo {

/// One frame of a peer. The views point into the connection's buffer and hold until it receives
/// again.
struct Frame {
    FrameHeader header;
    std::string_view protocol;
    std::string_view interfaceName;
    std::string_view payload;
};

/// What was found at the front of a peer's stream.
enum class FrameFinding {
    eNothing,       ///< no whole frame is there
    eFrame,         ///< a whole frame
    eOversized,     ///< a frame without its payload, which is thrown away as it arrives
    eNotOurs,       ///< no frame, and nothing behind it can be read
    eWrongVersion,  ///< likewise
    eUnknownKind,   ///< likewise
};

/// A finding with a frame that holds its own bytes, for another thread to handle.
class OwnedFrame {
public:
    OwnedFrame() = default;
    OwnedFrame(FrameFinding finding, const Frame& frame)
        : m_finding(finding),
          m_header(frame.header),
          m_protocol(frame.protocol),
          m_interfaceName(frame.interfaceName),
          m_payload(frame.payload) {}

    FrameFinding finding() const { return m_finding; }
    /// About the memory that it takes.
    std::size_t size() const { return sizeof *this + m_payload.size(); }
    /// Holds as long as this object.
    Frame frame() const { return {m_header, m_protocol, m_interfaceName, m_payload}; }

private:
    FrameFinding m_finding = FrameFinding::eNothing;
    FrameHeader m_header;
    std::string m_protocol;
    std::string m_interfaceName;
    std::string m_payload;
};

}  // namespace vireo
