#include "messages/OutputQueue.h"

#include <sys/socket.h>

#include <cerrno>

namespace vireo {
namespace {

// Memory that an empty queue keeps for the next frames.
constexpr std::size_t kKeptOutput = 64U << 10U;

}  // namespace

void OutputQueue::append(FrameKind kind, std::uint32_t correlation, std::string_view protocol,
                         std::string_view interfaceName, std::string_view payload) {
    const std::lock_guard lock(m_mutex);
    FrameCodec::append(m_bytes, kind, correlation, protocol, interfaceName, payload);
    m_unsent.store(m_bytes.size() - m_sent, std::memory_order_relaxed);
}

bool OutputQueue::flush(int socket) {
    if (unsent() == 0) {
        return true;
    }
    const std::lock_guard lock(m_mutex);
    const bool isAlive = m_bytes.size() == m_sent || sendOnce(socket);
    m_unsent.store(m_bytes.size() - m_sent, std::memory_order_relaxed);
    return isAlive;
}

bool OutputQueue::sendOnce(int socket) {
    ssize_t count = 0;
    do {
        count = ::send(socket, m_bytes.data() + m_sent, m_bytes.size() - m_sent,
                       MSG_NOSIGNAL | MSG_DONTWAIT);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        return errno == EAGAIN || errno == EWOULDBLOCK;
    }
    m_sent += static_cast<std::size_t>(count);
    if (m_sent == m_bytes.size()) {
        m_bytes.clear();
        m_sent = 0;
        if (m_bytes.capacity() > kKeptOutput) {
            m_bytes.shrink_to_fit();
        }
    } else if (m_sent >= m_bytes.size() / 2) {
        m_bytes.erase(0, m_sent);
        m_sent = 0;
    }
    return true;
}

}  // namespace vireo
