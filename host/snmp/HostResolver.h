#pragma once

#include <sys/socket.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace vireo {

/// Where a datagram goes.
struct UdpAddress {
    sockaddr_storage storage{};
    socklen_t length = 0;

    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage); }
    /// "192.0.2.1:162" or "[2001:db8::1]:162".
    std::string text() const;
    bool operator==(const UdpAddress& other) const;
};

/// Finds the addresses of receivers. Names are asked for on a thread of their own, so nobody waits
/// longer than `timeout`; what was found is kept for `life`, and used while it is asked for anew;
/// what was not is not asked for again for a while. A few names at most are asked for at a time: a
/// further one is not found until one of them has its answer. Safe from every thread.
class HostResolver {
public:
    HostResolver(std::chrono::milliseconds timeout, std::chrono::milliseconds life);
    ~HostResolver();
    HostResolver(const HostResolver&) = delete;
    HostResolver& operator=(const HostResolver&) = delete;

    /// None, with a one-line `error`, when `host` is no address and no name that is known now.
    std::optional<UdpAddress> find(const std::string& host, unsigned short port,
                                   std::string& error);
    /// Whether `host` is an address, which never changes.
    static bool isAddress(const std::string& host);

private:
    struct Names;

    bool start(const std::string& host, std::string& error);
    static void ask(const std::shared_ptr<Names>& names, const std::string& host);

    const std::chrono::milliseconds m_timeout;
    const std::chrono::milliseconds m_life;
    const std::shared_ptr<Names> m_names;  // also of threads that still wait for an answer
};

}  // namespace vireo
