#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "MgmtAgentDetails.h"
#include "items/RegistryHold.h"

namespace vireo {

/// The key under which observers of every item stand.
inline constexpr const char* kAllData = "all-data";

/// Who owns which management id, and who observes which item. Guarded by the registry semaphore;
/// safe from every thread.
class AgentRegistry {
public:
    RegistrySemaphore& semaphore() { return m_semaphore; }

    /// False, and the first registration stays, when the id is taken.
    bool addAgent(const std::string& managementId, MgmtAgentDetails agent);
    /// The registered agent, or {null, false}.
    MgmtAgentDetails findManageableProxy(const std::string& managementId);

    /// All registered agents that are there, in the order of their management ids.
    std::vector<MgmtAgentDetails> agents();

    /// Appends an observer; the same one may be there several times.
    void addObserver(const std::string& key, MgmtAgentDetails observer);
    /// Removes the first registration of `agent`, if there is one.
    void removeObserver(const std::string& key, const MgmtAgentIfc* agent);
    /// Deliberate: 1 when the key has any observers, however many, else 0.
    unsigned getNumberObservers(const std::string& rootId);
    /// Appends the observers of `key` in the order of their registration and answers their number.
    std::size_t appendObservers(const std::string& key, std::vector<MgmtAgentDetails>& out);

private:
    RegistrySemaphore m_semaphore;
    std::unordered_map<std::string, MgmtAgentDetails> m_agents;
    std::unordered_map<std::string, std::vector<MgmtAgentDetails>> m_observers;
};

}  // namespace vireo
