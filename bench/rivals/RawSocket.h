#pragma once

#include <cstddef>
#include <vector>

#include "harness/Process.h"
#include "messages/FileDescriptor.h"

namespace vireo::bench {

/// Messages of known sizes over a Unix stream socket: one write for each, buffered reads, nothing
/// else. What no service over such a socket can be faster than.
class RawStream {
public:
    explicit RawStream(FileDescriptor socket);

    void send(std::size_t size);
    /// Waits until a whole message of this size has come. False at the end of the stream.
    bool receive(std::size_t size);

private:
    FileDescriptor m_socket;
    std::vector<char> m_buffer;
    std::size_t m_received = 0;  // and not yet taken
};

/// How long the messages of an exchange are, frames included.
struct RawSizes {
    std::size_t request = 0;
    std::size_t reply = 0;
};

/// A process that answers each request with one reply.
class RawEcho {
public:
    explicit RawEcho(RawSizes sizes);

    /// One after the other.
    void exchange();
    /// All requests first, then all replies.
    void exchange(unsigned inFlight);

private:
    RawSizes m_sizes;
    RawStream m_stream;
    Process m_process;
};

/// A process that passes each request on to another one, and its reply back.
class RawRelay {
public:
    RawRelay(RawSizes outer, RawSizes inner);

    void exchange();

private:
    RawSizes m_sizes;
    RawStream m_stream;
    Process m_owner;
    Process m_relay;
};

/// A process that for each request sends one message to each observer, and a reply.
class RawFanOut {
public:
    RawFanOut(RawSizes sizes, std::size_t notification, unsigned observers);

    /// From the request to the last of the messages.
    void exchange();

private:
    RawSizes m_sizes;
    std::size_t m_notification;
    std::vector<RawStream> m_observers;
    RawStream m_stream;
    Process m_process;
};

}  // namespace vireo::bench
