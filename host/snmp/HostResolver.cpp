#include "snmp/HostResolver.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>

#include <condition_variable>
#include <csignal>
#include <cstring>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>

namespace vireo {
namespace {

using Clock = std::chrono::steady_clock;

// A name that is unknown may be known soon.
constexpr std::chrono::seconds kFailureLife(10);

// Each takes a thread, for as long as the system's answer takes.
constexpr unsigned kMostLookUps = 4;

struct FreeAddresses {
    void operator()(addrinfo* found) const { ::freeaddrinfo(found); }
};

/// The first address of the host, without a port.
std::optional<UdpAddress> lookUp(const std::string& host, int flags, std::string& error) {
    addrinfo wish{};
    wish.ai_socktype = SOCK_DGRAM;
    wish.ai_flags = flags;
    addrinfo* first = nullptr;
    const int failure = ::getaddrinfo(host.c_str(), nullptr, &wish, &first);
    if (failure != 0) {
        error = ::gai_strerror(failure);
        return std::nullopt;
    }
    const std::unique_ptr<addrinfo, FreeAddresses> found(first);
    UdpAddress address;
    std::memcpy(&address.storage, found->ai_addr, found->ai_addrlen);
    address.length = found->ai_addrlen;
    return address;
}

UdpAddress withPort(UdpAddress address, unsigned short port) {
    if (address.storage.ss_family == AF_INET6) {
        reinterpret_cast<sockaddr_in6&>(address.storage).sin6_port = htons(port);
    } else {
        reinterpret_cast<sockaddr_in&>(address.storage).sin_port = htons(port);
    }
    return address;
}

}  // namespace

/// What is known of names.
struct HostResolver::Names {
    struct Entry {
        bool isAsked = false;  ///< a thread is waiting for the answer
        std::optional<UdpAddress> address;
        std::string error = "the name is still being looked up";
        Clock::time_point asked;  ///< when the last answer came
    };

    std::mutex mutex;
    std::condition_variable answered;
    std::map<std::string, Entry> entries;
    unsigned asking = 0;  ///< threads that are waiting
};

std::string UdpAddress::text() const {
    char host[NI_MAXHOST];
    char port[NI_MAXSERV];
    if (::getnameinfo(get(), length, host, sizeof host, port, sizeof port,
                      NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
        return {};
    }
    const bool isLong = storage.ss_family == AF_INET6;
    return (isLong ? "[" : "") + std::string(host) + (isLong ? "]:" : ":") + port;
}

bool UdpAddress::operator==(const UdpAddress& other) const {
    return length == other.length && std::memcmp(&storage, &other.storage, length) == 0;
}

HostResolver::HostResolver(std::chrono::milliseconds timeout, std::chrono::milliseconds life)
    : m_timeout(timeout), m_life(life), m_names(std::make_shared<Names>()) {}

HostResolver::~HostResolver() = default;

bool HostResolver::isAddress(const std::string& host) {
    std::string ignored;
    return lookUp(host, AI_NUMERICHOST, ignored).has_value();
}

std::optional<UdpAddress> HostResolver::find(const std::string& host, unsigned short port,
                                             std::string& error) {
    if (const auto address = lookUp(host, AI_NUMERICHOST, error)) {
        return withPort(*address, port);
    }
    std::unique_lock lock(m_names->mutex);
    Names::Entry& entry = m_names->entries[host];
    const bool isNew = !entry.address && entry.asked == Clock::time_point();
    const auto life = entry.address ? m_life : std::chrono::milliseconds(kFailureLife);
    if (!entry.isAsked && (isNew || Clock::now() - entry.asked >= life)) {
        entry.isAsked = start(host, error);
        if (!entry.isAsked && !entry.address) {
            return std::nullopt;
        }
        if (isNew) {
            m_names->answered.wait_for(lock, m_timeout, [&entry] { return !entry.isAsked; });
        }
    }
    if (!entry.address) {
        error = entry.error;
        return std::nullopt;
    }
    return withPort(*entry.address, port);
}

/// Under the lock.
bool HostResolver::start(const std::string& host, std::string& error) {
    if (m_names->asking >= kMostLookUps) {
        error = "the name cannot be looked up while " + std::to_string(kMostLookUps) +
                " others have no answer";
        return false;
    }
    try {
        std::thread([names = m_names, host] { ask(names, host); }).detach();
    } catch (const std::system_error& failure) {
        error = std::string("the name cannot be looked up: ") + failure.what();
        return false;
    }
    ++m_names->asking;
    return true;
}

/// Not ended by anybody: the system's answer may take as long as it likes.
void HostResolver::ask(const std::shared_ptr<Names>& names, const std::string& host) {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, nullptr);
    std::string error;
    const std::optional<UdpAddress> address = lookUp(host, 0, error);
    const std::lock_guard lock(names->mutex);
    Names::Entry& entry = names->entries[host];
    if (address) {
        entry.address = address;
    }
    entry.error = error;
    entry.asked = Clock::now();
    entry.isAsked = false;
    --names->asking;
    names->answered.notify_all();
}

}  // namespace vireo
