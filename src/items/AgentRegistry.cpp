#include "items/AgentRegistry.h"

#include <algorithm>
#include <map>

#include "LogMacros.h"

namespace vireo {

bool AgentRegistry::addAgent(const std::string& managementId, MgmtAgentDetails agent) {
    const RegistryHold hold(m_semaphore);
    return m_agents.try_emplace(managementId, agent).second;
}

MgmtAgentDetails AgentRegistry::findManageableProxy(const std::string& managementId) {
    if (managementId.empty()) {
        return {};
    }
    const RegistryHold hold(m_semaphore);
    const auto found = m_agents.find(managementId);
    return found == m_agents.end() ? MgmtAgentDetails{} : found->second;
}

std::vector<MgmtAgentDetails> AgentRegistry::agents() {
    std::map<std::string, MgmtAgentDetails> sorted;
    {
        const RegistryHold hold(m_semaphore);
        sorted.insert(m_agents.begin(), m_agents.end());
    }
    std::vector<MgmtAgentDetails> agents;
    for (const auto& [managementId, details] : sorted) {
        if (details.agent != nullptr) {
            agents.push_back(details);
        }
    }
    return agents;
}

void AgentRegistry::addObserver(const std::string& key, MgmtAgentDetails observer) {
    const RegistryHold hold(m_semaphore);
    m_observers[key].push_back(observer);
}

void AgentRegistry::removeObserver(const std::string& key, const MgmtAgentIfc* agent) {
    const RegistryHold hold(m_semaphore);
    const auto entry = m_observers.find(key);
    if (entry == m_observers.end()) {
        VCMS_LOG(kLogDebug, "UnRegisterObserver - No observer was registered for %s", key.c_str());
        return;
    }
    std::vector<MgmtAgentDetails>& observers = entry->second;
    // Deliberate: the number is always given as 1.
    VCMS_LOG(kLogDebug, "UnRegisterObserver - %d observers found for %s", 1, key.c_str());
    const auto found = std::find_if(observers.begin(), observers.end(), [agent](const auto& each) {
        VCMS_LOG(kLogDebug, "UnRegisterObserver - considering Management agent %lx",
                 reinterpret_cast<unsigned long>(each.agent));
        return each.agent == agent;
    });
    if (found != observers.end()) {
        observers.erase(found);
        VCMS_LOG(kLogDebug, "UnRegisterObserver - Observer unregistered for %s", key.c_str());
    }
    if (observers.empty()) {
        m_observers.erase(entry);
        VCMS_LOG(kLogDebug, "UnRegisterObserver - last observer unregistered for %s", key.c_str());
    }
}

unsigned AgentRegistry::getNumberObservers(const std::string& rootId) {
    const RegistryHold hold(m_semaphore);
    return m_observers.contains(rootId) ? 1 : 0;
}

std::size_t AgentRegistry::appendObservers(const std::string& key,
                                           std::vector<MgmtAgentDetails>& out) {
    const RegistryHold hold(m_semaphore);
    const auto found = m_observers.find(key);
    if (found == m_observers.end()) {
        return 0;
    }
    out.insert(out.end(), found->second.begin(), found->second.end());
    return found->second.size();
}

}  // namespace vireo
