#include "messages/Connection.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <span>

namespace vireo {
namespace {

bool wouldBlock(int reason) {
    return reason == EAGAIN || reason == EWOULDBLOCK;
}

}  // namespace

Connection::Received Connection::receive() {
    const std::span<char> room = m_input.room();
    ssize_t count = 0;
    do {
        count = ::recv(m_socket.get(), room.data(), room.size(), MSG_DONTWAIT);
    } while (count < 0 && errno == EINTR);
    if (count > 0) {
        m_input.filled(static_cast<std::size_t>(count));
        return Received::eBytes;
    }
    return count < 0 && wouldBlock(errno) ? Received::eNothing : Received::eEnd;
}

void Connection::skipOversized() {
    const std::size_t count =
        std::min(static_cast<std::size_t>(m_skipped), m_input.content().size());
    m_input.consume(count);
    m_skipped -= count;
}

FrameFinding Connection::next(Frame& frame) {
    skipOversized();
    const std::string_view bytes = m_input.content();
    switch (FrameCodec::parseHeader(bytes, frame.header)) {
        case FrameCodec::Verdict::eIncomplete:
            return FrameFinding::eNothing;
        case FrameCodec::Verdict::eNotOurs:
            return FrameFinding::eNotOurs;
        case FrameCodec::Verdict::eWrongVersion:
            return FrameFinding::eWrongVersion;
        case FrameCodec::Verdict::eUnknownKind:
            return FrameFinding::eUnknownKind;
        case FrameCodec::Verdict::eHeader:
            break;
    }
    const bool oversized = frame.header.payloadLength > m_maximumPayload;
    const std::size_t payloadLength = oversized ? 0 : frame.header.payloadLength;
    const std::size_t payloadStart = FrameCodec::kHeaderSize + frame.header.nameLength();
    if (bytes.size() < payloadStart + payloadLength) {
        return FrameFinding::eNothing;
    }
    frame.protocol = bytes.substr(FrameCodec::kHeaderSize, frame.header.protocolLength);
    frame.interfaceName = bytes.substr(FrameCodec::kHeaderSize + frame.header.protocolLength,
                                       frame.header.interfaceLength);
    frame.payload = bytes.substr(payloadStart, payloadLength);
    m_input.consume(payloadStart + payloadLength);
    if (oversized) {
        m_skipped = frame.header.payloadLength;
        return FrameFinding::eOversized;
    }
    return FrameFinding::eFrame;
}

bool Connection::cutOff() {
    const bool isFirst = !m_isCutOff.exchange(true);
    if (isFirst) {
        ::shutdown(m_socket.get(), SHUT_RDWR);
    }
    return isFirst;
}

std::string Connection::label() const {
    if (!m_channel.empty()) {
        return "peer \"" + m_channel + '"';
    }
    ucred peer{};
    socklen_t length = sizeof peer;
    if (::getsockopt(m_socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0) {
        return "a peer";
    }
    return "process " + std::to_string(peer.pid);
}

}  // namespace vireo
