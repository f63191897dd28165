#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "messages/FileDescriptor.h"
#include "snmp/HostResolver.h"
#include "snmp/TrapMessage.h"
#include "snmp/TrapOptions.h"

namespace vireo {

class InformChannel;

/// Where an outbox goes to.
struct InformPlace {
    UdpAddress address;
    std::string name;  ///< for log lines
    std::string community;
    ReceiverSettings receiver;
};

/// Traps that wait for one receiver.
struct InformOutbox;

/// Sends traps that the receiver is to confirm, and those of version 3, on one thread. Each
/// receiver has a queue and gets one trap at a time, in order; no receiver waits for another. What
/// is not confirmed is sent again a few times, and then given up, with an error line. Safe from
/// every thread.
class InformSender {
public:
    /// The references outlive this. `root` holds the files of version 3.
    InformSender(std::string root, const TrapOptions& options, const TrapOrigin& origin);
    ~InformSender();
    InformSender(const InformSender&) = delete;
    InformSender& operator=(const InformSender&) = delete;

    std::shared_ptr<InformOutbox> open(InformPlace place);
    /// False, with a one-line `error`, when too many wait already, or nothing is sent any more.
    bool add(const std::shared_ptr<InformOutbox>& outbox, TrapContent content, std::string& error);
    /// Gives up what still waits. Nothing for null.
    void close(const std::shared_ptr<InformOutbox>& outbox);

    /// Ends the thread; nothing is taken any more.
    void stop();

private:
    using Channels = std::vector<std::unique_ptr<InformChannel>>;

    bool start(std::string& error);
    void wake() const;
    void work();
    bool takeNew(Channels& channels);
    bool isStopping();
    void await(const Channels& channels, bool isWaiting);

    const std::string m_root;
    const TrapOptions& m_options;
    const TrapOrigin& m_origin;
    std::mutex m_mutex;  ///< guards what follows and the outboxes
    std::vector<std::shared_ptr<InformOutbox>> m_new;
    bool m_isStopping = false;
    FileDescriptor m_wake;
    std::thread m_thread;  ///< started by the first trap
};

}  // namespace vireo
