#include "messages/FrameCodec.h"

namespace vireo {
namespace {

constexpr unsigned char kMagic0 = 0x56;
constexpr unsigned char kMagic1 = 0x43;
constexpr unsigned char kVersion = 1;

std::uint32_t readNumber(const unsigned char* bytes) {
    return std::uint32_t{bytes[0]} << 24U | std::uint32_t{bytes[1]} << 16U |
           std::uint32_t{bytes[2]} << 8U | std::uint32_t{bytes[3]};
}

void writeNumber(unsigned char* bytes, std::uint32_t value) {
    bytes[0] = static_cast<unsigned char>(value >> 24U);
    bytes[1] = static_cast<unsigned char>(value >> 16U);
    bytes[2] = static_cast<unsigned char>(value >> 8U);
    bytes[3] = static_cast<unsigned char>(value);
}

}  // namespace

FrameCodec::Verdict FrameCodec::parseHeader(std::string_view bytes, FrameHeader& header) {
    const auto* raw = reinterpret_cast<const unsigned char*>(bytes.data());
    // What is no frame of ours is seen from its first bytes, without waiting for a whole header.
    if ((!bytes.empty() && raw[0] != kMagic0) || (bytes.size() > 1 && raw[1] != kMagic1)) {
        return Verdict::eNotOurs;
    }
    if (bytes.size() > 2 && raw[2] != kVersion) {
        return Verdict::eWrongVersion;
    }
    if (bytes.size() < kHeaderSize) {
        return Verdict::eIncomplete;
    }
    if (raw[3] < static_cast<unsigned char>(FrameKind::eHello) ||
        raw[3] > static_cast<unsigned char>(FrameKind::eNotification)) {
        return Verdict::eUnknownKind;
    }
    header.kind = static_cast<FrameKind>(raw[3]);
    header.correlation = readNumber(raw + 4);
    header.protocolLength = raw[8];
    header.interfaceLength = raw[9];
    header.payloadLength = readNumber(raw + 12);
    return Verdict::eHeader;
}

void FrameCodec::append(std::string& out, FrameKind kind, std::uint32_t correlation,
                        std::string_view protocol, std::string_view interfaceName,
                        std::string_view payload) {
    unsigned char header[kHeaderSize] = {kMagic0, kMagic1, kVersion,
                                         static_cast<unsigned char>(kind)};
    writeNumber(header + 4, correlation);
    header[8] = static_cast<unsigned char>(protocol.size());
    header[9] = static_cast<unsigned char>(interfaceName.size());
    writeNumber(header + 12, static_cast<std::uint32_t>(payload.size()));
    out.reserve(out.size() + kHeaderSize + protocol.size() + interfaceName.size() + payload.size());
    out.append(reinterpret_cast<const char*>(header), kHeaderSize);
    out.append(protocol);
    out.append(interfaceName);
    out.append(payload);
}

}  // namespace vireo
