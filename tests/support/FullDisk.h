#pragma once

#include <sys/resource.h>

#include <csignal>

namespace vireo::test {

/// While it lives no byte reaches a file of this process, as on a full disk.
class FullDisk {
public:
    FullDisk() {
        m_oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_old);
        const rlimit none{0, m_old.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &none);
    }
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &m_old);
        std::signal(SIGXFSZ, m_oldHandler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_old{};
    void (*m_oldHandler)(int) = nullptr;
};

}  // namespace vireo::test
