#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <utility>

namespace vireo {

class Executable;
class Service;

/// The services of this process by interface name. Filled at start-up, before other threads are
/// there; from then on read from every thread without a lock.
class ServiceRegistry {
public:
    /// `service` is not owned. The first registration of a name stays; false for a second one.
    bool add(std::string interfaceName, Executable& service) {
        return m_services.try_emplace(std::move(interfaceName), &service).second;
    }
    /// The service of that name, or null.
    Executable* find(const std::string& interfaceName) const {
        const auto found = m_services.find(interfaceName);
        return found == m_services.end() ? nullptr : found->second;
    }

    /// Makes an in-process service known as the peer `channel` for an interface. The first stays.
    bool addOnChannel(const std::string& interfaceName, const std::string& channel,
                      Service& service) {
        return m_onChannels.try_emplace({channel, interfaceName}, &service).second;
    }
    /// The service that offers the interface on that channel, or null.
    Service* findOnChannel(const std::string& interfaceName, const std::string& channel) const {
        const auto found = m_onChannels.find({channel, interfaceName});
        return found == m_onChannels.end() ? nullptr : found->second;
    }

private:
    std::map<std::pair<std::string, std::string>, Service*> m_onChannels;
    std::unordered_map<std::string, Executable*> m_services;
};

}  // namespace vireo
