#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vireo {

// One frame on a peer's stream:
//
//   offset size
//   0      2    magic 0x56 0x43
//   2      1    version, 1
//   3      1    kind
//   4      4    correlation id; a reply carries that of its request
//   8      1    length P of the protocol name
//   9      1    length I of the interface name
//   10     2    reserved, 0
//   12     4    length N of the payload
//   16     P    protocol name, then I bytes interface name, then N bytes payload
//
// Numbers are big-endian.

enum class FrameKind : std::uint8_t {
    eHello = 1,         ///< first frame of a peer; payload: the channel name it wants
    eWelcome = 2,       ///< answer to a hello; payload: the channel name it has
    eRefusal = 3,       ///< the service ends the connection; payload: why, one line
    eRequest = 4,       ///< wants exactly one reply
    eReply = 5,         ///< payload: the reply, possibly empty
    eNotification = 6,  ///< wants no reply
};

struct FrameHeader {
    FrameKind kind = FrameKind::eRequest;
    std::uint32_t correlation = 0;
    std::uint8_t protocolLength = 0;
    std::uint8_t interfaceLength = 0;
    std::uint32_t payloadLength = 0;

    std::size_t nameLength() const { return std::size_t{protocolLength} + interfaceLength; }
};

class FrameCodec {
public:
    static constexpr std::size_t kHeaderSize = 16;
    static constexpr std::uint32_t kMaximumPayload = 4U << 20U;

    enum class Verdict { eIncomplete, eHeader, eNotOurs, eWrongVersion, eUnknownKind };

    /// Reads a header from the front of `bytes`. The payload length is reported as it stands: the
    /// caller compares it with its limit before it allocates anything.
    static Verdict parseHeader(std::string_view bytes, FrameHeader& header);

    /// Appends one whole frame. Names are at most 255 bytes.
    static void append(std::string& out, FrameKind kind, std::uint32_t correlation,
                       std::string_view protocol, std::string_view interfaceName,
                       std::string_view payload);
};

}  // namespace vireo
