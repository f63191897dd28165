#include "snmp/InformSender.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <csignal>
#include <system_error>
#include <utility>

#include "log/Log.h"
#include "snmp/InformChannel.h"

namespace vireo {
namespace {

// How often is looked for what was not confirmed in time, while something waits.
constexpr int kTickMilliseconds = 20;

void logLine(int level, int line, const std::string& text) {
    if (loggingOnUni(level)) {
        logAppUni("Traps", "./host/snmp/InformSender", level, line, "%s", text.c_str());
    }
}

/// The main thread alone takes signals.
void blockSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

}  // namespace

InformSender::InformSender(std::string root, const TrapOptions& options, const TrapOrigin& origin)
    : m_root(std::move(root)),
      m_options(options),
      m_origin(origin),
      m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

InformSender::~InformSender() {
    stop();
}

void InformSender::stop() {
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
    }
    wake();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void InformSender::wake() const {
    ::eventfd_write(m_wake.get(), 1);
}

std::shared_ptr<InformOutbox> InformSender::open(InformPlace place) {
    auto outbox = std::make_shared<InformOutbox>();
    outbox->place = std::move(place);
    const std::lock_guard lock(m_mutex);
    m_new.push_back(outbox);
    return outbox;
}

/// Under the lock.
bool InformSender::start(std::string& error) {
    if (m_thread.joinable()) {
        return true;
    }
    try {
        m_thread = std::thread([this] { work(); });
    } catch (const std::system_error& failure) {
        error = std::string("no thread to send traps: ") + failure.what();
    }
    return m_thread.joinable();
}

bool InformSender::add(const std::shared_ptr<InformOutbox>& outbox, TrapContent content,
                       std::string& error) {
    {
        const std::lock_guard lock(m_mutex);
        if (m_isStopping) {
            error = "traps have ended";
            return false;
        }
        if (outbox->waiting.size() >= m_options.queueLength) {
            error = "no further trap for " + outbox->place.name + ": " +
                    std::to_string(outbox->waiting.size()) + " wait for it already";
            return false;
        }
        if (!start(error)) {
            return false;
        }
        outbox->waiting.push_back(std::move(content));
    }
    wake();
    return true;
}

void InformSender::close(const std::shared_ptr<InformOutbox>& outbox) {
    if (!outbox) {
        return;
    }
    std::size_t given = 0;
    {
        const std::lock_guard lock(m_mutex);
        outbox->isClosed = true;
        given = outbox->waiting.size();
        outbox->waiting.clear();
    }
    wake();
    if (given > 0) {
        logLine(kLogWarning, __LINE__,
                std::to_string(given) + " traps that waited for " + outbox->place.name +
                    " were given up with its session");
    }
}

/// Gives every channel that is free its next trap, and drops those that were closed. Whether one
/// waits to be confirmed.
bool InformSender::takeNew(Channels& channels) {
    bool isWaiting = false;
    std::erase_if(channels, [this](const auto& channel) {
        const std::lock_guard lock(m_mutex);
        return channel->outbox().isClosed;
    });
    for (const auto& channel : channels) {
        while (!channel->isWaiting()) {
            TrapContent next;
            {
                const std::lock_guard lock(m_mutex);
                auto& waiting = channel->outbox().waiting;
                if (waiting.empty()) {
                    break;
                }
                next = std::move(waiting.front());
                waiting.pop_front();
            }
            channel->send(std::move(next));
        }
        isWaiting = isWaiting || channel->isWaiting();
    }
    return isWaiting;
}

bool InformSender::isStopping() {
    const std::lock_guard lock(m_mutex);
    return m_isStopping;
}

void InformSender::work() {
    blockSignals();
    InformSurroundings surroundings{m_options, m_origin, m_root, std::nullopt};
    Channels channels;
    while (!isStopping()) {
        std::vector<std::shared_ptr<InformOutbox>> opened;
        {
            const std::lock_guard lock(m_mutex);
            opened = std::exchange(m_new, {});
        }
        for (std::shared_ptr<InformOutbox>& outbox : opened) {
            channels.push_back(std::make_unique<InformChannel>(std::move(outbox), surroundings));
        }
        await(channels, takeNew(channels));
    }
}

void InformSender::await(const Channels& channels, bool isWaiting) {
    std::vector<pollfd> ready{{m_wake.get(), POLLIN, 0}};
    for (const auto& channel : channels) {
        ready.push_back({channel->isWaiting() ? channel->descriptor() : -1, POLLIN, 0});
    }
    ::poll(ready.data(), ready.size(), isWaiting ? kTickMilliseconds : -1);
    eventfd_t ignored = 0;
    ::eventfd_read(m_wake.get(), &ignored);
    for (std::size_t i = 0; i < channels.size(); ++i) {
        if (!channels[i]->isWaiting()) {
            continue;
        }
        if (ready[i + 1].revents != 0) {  // a refusal as well, or it would be told again and again
            channels[i]->read();
        }
        if (channels[i]->isWaiting()) {
            channels[i]->checkTime();
        }
    }
}

}  // namespace vireo
