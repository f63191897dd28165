#include "messages/ProxyTable.h"

namespace vireo {

Executable* ProxyTable::find(const std::string& channel, const std::string& interfaceName) {
    const auto factory = m_factories.find(interfaceName);
    if (factory == m_factories.end() || channel.empty()) {
        return nullptr;
    }
    const auto [found, isNew] = m_proxies.try_emplace({channel, interfaceName});
    Entry& entry = found->second;
    if (isNew) {
        entry.request =
            std::make_unique<SocketProxyRequest>(m_loop, m_services, interfaceName, channel);
        entry.proxy = factory->second();
        if (entry.proxy) {
            entry.proxy->initProxy(*entry.request);
        }
    }
    return entry.proxy.get();
}

std::vector<Executable*> ProxyTable::allOf(const std::string& channel) const {
    std::vector<Executable*> proxies;
    for (auto each = m_proxies.lower_bound({channel, ""});
         each != m_proxies.end() && each->first.first == channel; ++each) {
        if (each->second.proxy) {
            proxies.push_back(each->second.proxy.get());
        }
    }
    return proxies;
}

}  // namespace vireo
