#include "terminal/StopSignal.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace vireo {

StopSignal::StopSignal() {
    sigset_t stops;
    sigemptyset(&stops);
    sigaddset(&stops, SIGINT);
    sigaddset(&stops, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stops, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    m_descriptor = ::signalfd(-1, &stops, SFD_CLOEXEC);
    if (m_descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot wait for signals");
    }
}

StopSignal::~StopSignal() {
    ::close(m_descriptor);
}

bool StopSignal::wait(std::chrono::milliseconds timeout) const {
    pollfd waited{m_descriptor, POLLIN, 0};
    return ::poll(&waited, 1, static_cast<int>(timeout.count())) > 0;
}

void StopSignal::wait() const {
    while (!wait(std::chrono::hours(24))) {
    }
}

}  // namespace vireo
