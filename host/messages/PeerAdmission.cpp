#include "messages/PeerAdmission.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "log/Log.h"

namespace vireo {
namespace {

constexpr int kAcceptedAtOnce = 64;

bool isTransient(int reason) {
    return reason == EINTR || reason == ECONNABORTED || reason == EPROTO;
}

}  // namespace

PeerAdmission::PeerAdmission(const FileDescriptor& epoll, Admit admit)
    : m_epoll(epoll), m_admit(std::move(admit)) {}

bool PeerAdmission::open(const std::string& socketPath, int backlog, std::string& error) {
    m_listener = ListeningSocket::open(socketPath, error, backlog);
    if (m_listener) {
        setAccepting(true);
    }
    return m_listener != nullptr;
}

void PeerAdmission::setAccepting(bool on) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = descriptor();
    m_isAccepting =
        ::epoll_ctl(m_epoll.get(), on ? EPOLL_CTL_ADD : EPOLL_CTL_DEL, descriptor(), &event) == 0 &&
        on;
}

void PeerAdmission::acceptSome() {
    for (int i = 0; i < kAcceptedAtOnce; ++i) {
        FileDescriptor socket(
            ::accept4(descriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (socket) {
            m_hasFailed = false;
            m_admit(std::move(socket));
        } else if (errno == EAGAIN) {
            return;
        } else if (!isTransient(errno)) {
            pause(errno);
            return;
        }
    }
}

void PeerAdmission::pause(int reason) {
    // No descriptor or no memory is left. The peers wait in the socket meanwhile; asking again at
    // once would keep the processor busy for nothing.
    setAccepting(false);
    if (!m_hasFailed && loggingOnUni(kLogError)) {
        logAppUni("PeerAdmission", "./host/messages/PeerAdmission", kLogError, __LINE__,
                  "cannot accept peers for now: %s",
                  std::generic_category().message(reason).c_str());
    }
    m_hasFailed = true;
}

}  // namespace vireo
