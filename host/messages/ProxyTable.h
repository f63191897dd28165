#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "messages/SocketProxyRequest.h"
#include "runtime/PluginLoader.h"

namespace vireo {

/// The proxies of the peers. One for each channel name and interface, made when it is first asked
/// for and kept to the end: a pointer to it stands for the peer, also when its process comes back.
/// Used on the message thread.
class ProxyTable {
public:
    using Factory = std::function<PluginProxy()>;

    /// Both outlive this.
    ProxyTable(MessageLoop& loop, const ServiceRegistry& services)
        : m_loop(loop), m_services(services) {}

    /// Proxies for `interfaceName` are made by `factory`. Before the first look-up.
    void offer(std::string interfaceName, Factory factory) {
        m_factories[std::move(interfaceName)] = std::move(factory);
    }
    /// Null for an interface that nobody offers.
    Executable* find(const std::string& channel, const std::string& interfaceName);
    /// The proxies that there are for a peer, whatever their interface.
    std::vector<Executable*> allOf(const std::string& channel) const;

private:
    struct Entry {
        std::unique_ptr<SocketProxyRequest> request;
        PluginProxy proxy;
    };

    MessageLoop& m_loop;
    const ServiceRegistry& m_services;
    std::unordered_map<std::string, Factory> m_factories;
    std::map<std::pair<std::string, std::string>, Entry> m_proxies;
};

}  // namespace vireo
