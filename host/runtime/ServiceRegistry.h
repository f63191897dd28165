#pragma once

#include <string>
#include <unordered_map>

namespace vireo {

class Executable;

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

private:
    std::unordered_map<std::string, Executable*> m_services;
};

}  // namespace vireo
