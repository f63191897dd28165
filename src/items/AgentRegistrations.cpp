#include "items/AgentRegistrations.h"

#include "LogMacros.h"
#include "data/DataCollection.h"
#include "items/AgentRegistry.h"
#include "items/ItemCatalogue.h"
#include "items/ValueCache.h"

namespace vireo {
namespace {

unsigned long addressOf(const MgmtAgentIfc* agent) {
    return reinterpret_cast<unsigned long>(agent);
}

}  // namespace

AgentRegistrations::AgentRegistrations(ItemCatalogue& catalogue, const DataCollection& collections,
                                       AgentRegistry& registry, ValueCache& cache)
    : m_catalogue(catalogue), m_collections(collections), m_registry(registry), m_cache(cache) {}

bool AgentRegistrations::registerManagementIdentity(const std::string& managementId,
                                                    MgmtAgentIfc* agent, bool bulk) {
    VCMS_LOG(kLogDebug, "registerManagementIdentity - managementId: %s", managementId.c_str());
    if (managementId == kOwnManagementId) {
        // Its items would not go to the agent, but their kept values would be gone.
        VCMS_LOG(kLogWarning, "registerManagementIdentity - %s is this service's own",
                 managementId.c_str());
        return false;
    }
    if (agent == nullptr || managementId.empty() ||
        !m_registry.addAgent(managementId, {agent, bulk})) {
        return false;
    }
    VCMS_LOG(kLogDebug, "registerManagementIdentity - Agent registered: %s", managementId.c_str());
    for (const std::string& rootId : m_catalogue.itemsOf(managementId)) {
        m_catalogue.master().deleteDocument(rootId);
        m_cache.correct(m_cache.mark(), rootId, std::nullopt);
    }
    return true;
}

int AgentRegistrations::observeManageableData(const std::string& rootId, MgmtAgentIfc* agent,
                                              bool bulk) {
    VCMS_LOG(kLogDebug, "observeManageableData - called by %lx for rootId: %s", addressOf(agent),
             rootId.c_str());
    if (agent == nullptr) {
        VCMS_LOG(kLogError, "VCMS observeManageableData - NULL manageableIfc received");
        return 0;
    }
    if (rootId.empty()) {
        VCMS_LOG(kLogError, "VCMS observeManageableData - empty rootID received");
        return 0;
    }
    if (!m_collections.empty(rootId)) {
        const int result = m_collections.observe(rootId, agent, bulk);
        VCMS_LOG(kLogDebug, "observeManageableData - observing collection: %s, rc = %d",
                 rootId.c_str(), result);
        return result;
    }
    const int result = registerObserver(rootId, agent, bulk) ? 1 : 0;
    VCMS_LOG(kLogDebug, "observeManageableData - %lx observing rootId: %s, rc = %d",
             addressOf(agent), rootId.c_str(), result);
    return result;
}

int AgentRegistrations::observeManageableData(const std::list<std::string>& rootIds,
                                              MgmtAgentIfc* agent, bool bulk) {
    int all = rootIds.empty() ? 0 : 1;
    for (const std::string& rootId : rootIds) {
        const int result = observeManageableData(rootId, agent, bulk);
        if (!m_collections.empty(rootId)) {
            VCMS_LOG(kLogDebug, "observeManageableData - %lx observing collection: %s, rc = %d",
                     addressOf(agent), rootId.c_str(), result);
        }
        all = result == 1 ? all : 0;
    }
    return all;
}

bool AgentRegistrations::stopObservingManageableData(const std::string& rootId,
                                                     MgmtAgentIfc* agent) {
    VCMS_LOG(kLogDebug, "stopObservingManageableData - called by %lx for rootId: %s",
             addressOf(agent), rootId.c_str());
    // Deliberate: the observation of a collection cannot be taken back here.
    if (agent == nullptr || rootId.empty() || !m_collections.empty(rootId)) {
        return false;
    }
    return unRegisterObserver(rootId, agent);
}

bool AgentRegistrations::canBeObserved(const std::string& rootId) const {
    if (rootId == kAllData || !m_catalogue.findManagementId(rootId).empty()) {
        return true;
    }
    VCMS_LOG(kLogError, "Node Id %s does not exist", rootId.c_str());
    return false;
}

bool AgentRegistrations::registerObserver(const std::string& rootId, MgmtAgentIfc* agent,
                                          bool bulk) {
    if (!canBeObserved(rootId)) {
        return false;
    }
    m_registry.addObserver(rootId, {agent, bulk});
    VCMS_LOG(kLogDebug, "RegisterObserver - Observer %lx registered for %s", addressOf(agent),
             rootId.c_str());
    return true;
}

bool AgentRegistrations::unRegisterObserver(const std::string& rootId, MgmtAgentIfc* agent) {
    if (!canBeObserved(rootId)) {
        return false;
    }
    m_registry.removeObserver(rootId, agent);
    return true;
}

}  // namespace vireo
