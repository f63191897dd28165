#include <sys/socket.h>

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include "Fuzz.h"
#include "messages/Connection.h"
#include "messages/PeerDirectory.h"
#include "messages/PeerProtocol.h"
#include "messages/RequestDispatcher.h"
#include "service/Executable.h"
#include "service/Invoker.h"

namespace vireo::fuzz {
namespace {

struct Echo : Invoker {
    void initInvoker(FrameworkContext*) override {}
    void handleMessage(Executable*, const char* message, int length,
                       InvokerResponse* response) override {
        response->setPayload(message, length);
        response->send();
    }
};

/// The service's end of one peer's stream, without a loop around it.
class Session {
public:
    Session() {
        int ends[2];
        require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends) == 0, "sockets");
        m_connection =
            std::make_shared<Connection>(FileDescriptor(ends[0]), FrameCodec::kMaximumPayload);
        m_peer = FileDescriptor(ends[1]);
        m_dispatcher.serve("LocalMgmtIfc", m_echo, m_executable);
    }

    /// Gives the service the bytes in pieces and answers all that it sends.
    std::string exchange(std::string_view bytes, std::size_t pieceSize) {
        while (!bytes.empty() && !m_connection->finishing()) {
            const std::string_view piece = bytes.substr(0, pieceSize);
            require(::send(m_peer.get(), piece.data(), piece.size(), 0) ==
                        static_cast<ssize_t>(piece.size()),
                    "the socket has room for a piece");
            bytes.remove_prefix(piece.size());
            serve();
        }
        return m_received;
    }

    std::size_t requests() const { return m_requests; }

private:
    void serve() {
        Frame frame;
        while (m_connection->receive() == Connection::Received::eBytes) {
            FrameFinding found = FrameFinding::eNothing;
            while (!m_connection->finishing() &&
                   (found = m_connection->next(frame)) != FrameFinding::eNothing) {
                count(found, frame);
                m_protocol.handle(m_connection, found, frame);
            }
            drain();
        }
    }

    void count(FrameFinding found, const Frame& frame) {
        const bool isWhole = found == FrameFinding::eFrame || found == FrameFinding::eOversized;
        if (isWhole && frame.header.kind == FrameKind::eRequest &&
            !m_connection->channel().empty()) {
            ++m_requests;
        }
    }

    void drain() {
        char buffer[65536];
        do {
            require(m_connection->flush(), "the connection stands");
            ssize_t got = 0;
            while ((got = ::recv(m_peer.get(), buffer, sizeof buffer, 0)) > 0) {
                m_received.append(buffer, static_cast<std::size_t>(got));
            }
        } while (m_connection->unsent() > 0);
    }

    Echo m_echo;
    Executable m_executable;
    PeerDirectory m_peers;
    RequestDispatcher m_dispatcher;
    PeerProtocol m_protocol{m_peers, m_dispatcher};
    std::shared_ptr<Connection> m_connection;
    FileDescriptor m_peer;
    std::string m_received;
    std::size_t m_requests = 0;
};

/// How many replies `bytes` holds, which have to be whole frames that only a service sends.
std::size_t countReplies(std::string_view bytes) {
    std::size_t replies = 0;
    while (!bytes.empty()) {
        FrameHeader header;
        require(FrameCodec::parseHeader(bytes, header) == FrameCodec::Verdict::eHeader,
                "the service sends frames");
        const std::size_t length =
            FrameCodec::kHeaderSize + header.nameLength() + header.payloadLength;
        require(length <= bytes.size(), "the service sends whole frames");
        require(header.kind == FrameKind::eReply || header.kind == FrameKind::eWelcome ||
                    header.kind == FrameKind::eRefusal,
                "the service sends what a service may");
        replies += header.kind == FrameKind::eReply ? 1 : 0;
        bytes.remove_prefix(length);
    }
    return replies;
}

}  // namespace

/// The choice is the size of the pieces in which the bytes arrive the second time.
void run(std::string_view input) {
    const std::size_t pieceSize = takeChoice(input) + std::size_t{1};
    Session whole;
    const std::string answer = whole.exchange(input, InputBuffer::kReadSize);
    require(countReplies(answer) == whole.requests(), "every request gets one reply");
    Session pieces;
    require(pieces.exchange(input, pieceSize) == answer,
            "it does not matter in which pieces the bytes arrive");
}

}  // namespace vireo::fuzz
