#pragma once

#include <list>
#include <string>

namespace vireo {

class AgentRegistry;
class DataCollection;
class ItemCatalogue;
class MgmtAgentIfc;
class ValueCache;

/// What owners and observers ask for: checked, then entered into the registry. Safe from every
/// thread.
class AgentRegistrations {
public:
    AgentRegistrations(ItemCatalogue& catalogue, const DataCollection& collections,
                       AgentRegistry& registry, ValueCache& cache);

    /// What is known of the owner's items, documents and values, is forgotten, so that later reads
    /// go to the owner. False when there is no agent or no id, or the id has an owner.
    bool registerManagementIdentity(const std::string& managementId, MgmtAgentIfc* agent,
                                    bool bulk);

    /// 1 or 0; see `LocalMgmtIfc`.
    int observeManageableData(const std::string& rootId, MgmtAgentIfc* agent, bool bulk);
    int observeManageableData(const std::list<std::string>& rootIds, MgmtAgentIfc* agent,
                              bool bulk);
    bool stopObservingManageableData(const std::string& rootId, MgmtAgentIfc* agent);

    /// False when `rootId` is neither an item nor "all-data".
    bool registerObserver(const std::string& rootId, MgmtAgentIfc* agent, bool bulk);
    /// The same; true also when nothing was registered.
    bool unRegisterObserver(const std::string& rootId, MgmtAgentIfc* agent);

private:
    bool canBeObserved(const std::string& rootId) const;

    ItemCatalogue& m_catalogue;
    const DataCollection& m_collections;
    AgentRegistry& m_registry;
    ValueCache& m_cache;
};

}  // namespace vireo
