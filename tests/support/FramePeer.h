#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "messages/FileDescriptor.h"
#include "messages/FrameCodec.h"

namespace vireo::test {

struct ReceivedFrame {
    FrameKind kind;
    std::uint32_t correlation;
    std::string protocol;
    std::string interfaceName;
    std::string payload;
};

/// A listening Unix socket at `path`.
FileDescriptor listenAt(const std::string& path);

/// The other end of the service's socket: writes any bytes, reads frames. Waits by poll, at most
/// half a minute.
class FramePeer {
public:
    /// Not connected yet.
    FramePeer();
    explicit FramePeer(const std::string& socketPath);
    /// A connection that is there already.
    explicit FramePeer(FileDescriptor socket);

    bool connect(const std::string& socketPath);
    /// Writes everything; false when the service has closed the connection.
    bool write(std::string_view bytes);
    /// The next frame; nothing at the end of the stream.
    std::optional<ReceivedFrame> read();
    void close() { m_socket.reset(); }
    /// Ends the own side of the stream; the other one can still be read.
    void endSending();
    /// Ends the own side and reads until the service has ended its own.
    void leave();

    /// Says hello and answers the channel name given, or "refused: " and the reason.
    std::string hello(std::string_view channel);
    /// One request and the payload of its reply; "no reply" for anything else.
    std::string ask(std::string_view payload, std::string_view interfaceName = "EchoIfc",
                    std::string_view protocol = "vireo_rpc");

    static std::string frame(FrameKind kind, std::uint32_t correlation, std::string_view payload,
                             std::string_view protocol = "vireo_rpc",
                             std::string_view interfaceName = "EchoIfc");

protected:
    int descriptor() const { return m_socket.get(); }

private:
    bool waitFor(short events) const;

    FileDescriptor m_socket;
    std::uint32_t m_lastCorrelation = 1000;
    std::string m_input;
    std::size_t m_used = 0;
};

}  // namespace vireo::test
