#pragma once

#include <string>
#include <unordered_map>

#include "messages/MessageLoop.h"
#include "messages/ProxyTable.h"
#include "service/Invoker.h"

namespace vireo {

/// What the framework offers to invokers: the protocols that it knows, and the senders of messages.
class HostFramework : public FrameworkContext {
public:
    /// Both outlive the framework.
    HostFramework(const MessageLoop& loop, ProxyTable& proxies)
        : m_loop(loop), m_proxies(proxies) {}

    /// Makes `adapter` known under `protocol`; not owned, it outlives this object. Before the first
    /// look-up only.
    void registerProtocol(std::string protocol, ProtocolAdapter& adapter) {
        m_adapters[std::move(protocol)] = &adapter;
    }

    ProtocolAdapter* findProtocolAdapter(const std::string& protocol) override {
        const auto found = m_adapters.find(protocol);
        return found == m_adapters.end() ? nullptr : found->second;
    }

    Executable* findPeerProxy(const std::string& interfaceName) override {
        return m_proxies.find(m_loop.currentChannel(), interfaceName);
    }

private:
    const MessageLoop& m_loop;
    ProxyTable& m_proxies;
    std::unordered_map<std::string, ProtocolAdapter*> m_adapters;
};

}  // namespace vireo
