#pragma once

#include "service/Context.h"

namespace vireo {

class MessageLoop;
class ServiceRegistry;

/// The run-time context of the services in this process.
class HostContext : public SvcRTEContext {
public:
    /// Both outlive the context.
    HostContext(const ServiceRegistry& services, MessageLoop& loop)
        : m_services(services), m_loop(loop) {}

    Executable* findService(const std::string& interfaceName) override;
    void postToMessageThread(std::function<void()> task) override;
    TimerFacility* timers() override { return nullptr; }

private:
    const ServiceRegistry& m_services;
    MessageLoop& m_loop;
};

}  // namespace vireo
