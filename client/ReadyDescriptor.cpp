#include "ReadyDescriptor.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>

#include <cstdint>

namespace vireo {
namespace {

bool control(int epoll, int operation, int descriptor, std::uint32_t events) {
    epoll_event event{};
    event.events = events;
    return ::epoll_ctl(epoll, operation, descriptor, &event) == 0;
}

}  // namespace

ReadyDescriptor::ReadyDescriptor(int socket)
    : m_epoll(::epoll_create1(EPOLL_CLOEXEC)), m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (isUsable() && (!control(m_epoll.get(), EPOLL_CTL_ADD, m_wake.get(), EPOLLIN) ||
                       !control(m_epoll.get(), EPOLL_CTL_ADD, socket, EPOLLIN))) {
        m_epoll.reset();
    }
}

void ReadyDescriptor::update(int socket, bool wantsToSend, bool hasWork) {
    if (socket >= 0 && wantsToSend != m_isSending) {
        m_isSending = wantsToSend;
        control(m_epoll.get(), EPOLL_CTL_MOD, socket, wantsToSend ? EPOLLIN | EPOLLOUT : EPOLLIN);
    }
    if (hasWork != m_isAwake) {
        wake(hasWork);
    }
}

void ReadyDescriptor::wake(bool isAwake) {
    m_isAwake = isAwake;
    if (isAwake) {
        ::eventfd_write(m_wake.get(), 1);
    } else {
        std::uint64_t count = 0;
        ::eventfd_read(m_wake.get(), &count);
    }
}

}  // namespace vireo
