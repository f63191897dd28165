#pragma once

#include "service/Context.h"

namespace vireo {

class MessageLoop;
class ServiceRegistry;

/// The run-time context of the services in this process.
class HostContext : public SvcRTEContext {
public:
    /// All outlive the context.
    HostContext(const ServiceRegistry& services, MessageLoop& loop, TimerFacility& timers)
        : m_services(services), m_loop(loop), m_timers(timers) {}

    Executable* findService(const std::string& interfaceName) override;
    void postToMessageThread(std::function<void()> task) override;
    TimerFacility* timers() override { return &m_timers; }
    /// Only notes it in the log: what this process has to do, it does when it ends.
    bool notifyGoingDown() override;

private:
    const ServiceRegistry& m_services;
    MessageLoop& m_loop;
    TimerFacility& m_timers;
};

}  // namespace vireo
