#include "rivals/RawSocket.h"

#include <sys/socket.h>

#include <utility>

#include "harness/Failure.h"

namespace vireo::bench {
namespace {

constexpr std::size_t kRoom = 64U << 10U;

struct Ends {
    Ends() {
        int numbers[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, numbers) != 0) {
            failSystem("socketpair");
        }
        near = FileDescriptor(numbers[0]);
        far = FileDescriptor(numbers[1]);
    }
    FileDescriptor near;
    FileDescriptor far;
};

Process serveEcho(RawSizes sizes, FileDescriptor& far) {
    return Process::fork([&](const auto& ready) {
        RawStream stream(std::move(far));
        ready();
        while (stream.receive(sizes.request)) {
            stream.send(sizes.reply);
        }
    });
}

Process serveRelay(RawSizes outer, RawSizes inner, FileDescriptor& far, FileDescriptor& owner) {
    return Process::fork([&](const auto& ready) {
        RawStream peer(std::move(far));
        RawStream next(std::move(owner));
        ready();
        while (peer.receive(outer.request)) {
            next.send(inner.request);
            require(next.receive(inner.reply), "the owner of the relay is gone");
            peer.send(outer.reply);
        }
    });
}

}  // namespace

RawStream::RawStream(FileDescriptor socket) : m_socket(std::move(socket)), m_buffer(kRoom, 'x') {}

void RawStream::send(std::size_t size) {
    std::size_t sent = 0;
    while (sent < size) {
        const ssize_t now =
            ::send(m_socket.get(), m_buffer.data() + sent, size - sent, MSG_NOSIGNAL);
        if (now < 0) {
            failSystem("send");
        }
        sent += static_cast<std::size_t>(now);
    }
}

bool RawStream::receive(std::size_t size) {
    while (m_received < size) {
        const ssize_t got = ::recv(m_socket.get(), m_buffer.data(), m_buffer.size(), 0);
        if (got <= 0) {
            return false;
        }
        m_received += static_cast<std::size_t>(got);
    }
    m_received -= size;
    return true;
}

RawEcho::RawEcho(RawSizes sizes) : m_sizes(sizes), m_stream(FileDescriptor()) {
    Ends ends;
    m_process = serveEcho(sizes, ends.far);
    m_stream = RawStream(std::move(ends.near));
}

void RawEcho::exchange() {
    m_stream.send(m_sizes.request);
    require(m_stream.receive(m_sizes.reply), "the raw server is gone");
}

void RawEcho::exchange(unsigned inFlight) {
    for (unsigned i = 0; i < inFlight; ++i) {
        m_stream.send(m_sizes.request);
    }
    for (unsigned i = 0; i < inFlight; ++i) {
        require(m_stream.receive(m_sizes.reply), "the raw server is gone");
    }
}

RawRelay::RawRelay(RawSizes outer, RawSizes inner) : m_sizes(outer), m_stream(FileDescriptor()) {
    Ends ends;
    Ends further;
    m_owner = serveEcho(inner, further.far);
    m_relay = serveRelay(outer, inner, ends.far, further.near);
    m_stream = RawStream(std::move(ends.near));
}

void RawRelay::exchange() {
    m_stream.send(m_sizes.request);
    require(m_stream.receive(m_sizes.reply), "the raw relay is gone");
}

RawFanOut::RawFanOut(RawSizes sizes, std::size_t notification, unsigned observers)
    : m_sizes(sizes), m_notification(notification), m_stream(FileDescriptor()) {
    Ends ends;
    std::vector<Ends> all(observers);
    m_process = Process::fork([&](const auto& ready) {
        RawStream stream(std::move(ends.far));
        std::vector<RawStream> told;
        for (Ends& each : all) {
            told.emplace_back(std::move(each.far));
        }
        ready();
        while (stream.receive(sizes.request)) {
            stream.send(sizes.reply);
            for (RawStream& each : told) {
                each.send(notification);
            }
        }
    });
    m_stream = RawStream(std::move(ends.near));
    for (Ends& each : all) {
        m_observers.emplace_back(std::move(each.near));
    }
}

void RawFanOut::exchange() {
    m_stream.send(m_sizes.request);
    require(m_stream.receive(m_sizes.reply), "the raw server is gone");
    for (RawStream& observer : m_observers) {
        require(observer.receive(m_notification), "the raw server is gone");
    }
}

}  // namespace vireo::bench
