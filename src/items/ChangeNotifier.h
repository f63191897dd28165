#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "MgmtAgentDetails.h"
#include "items/ValueCache.h"

namespace vireo {

class AgentRegistry;
class DxlCollection;
class ManageableData;

/// Tells observers of changed items. Safe from every thread; observers are called without a lock.
class ChangeNotifier {
public:
    ChangeNotifier(AgentRegistry& registry, ValueCache& cache, const DxlCollection& master);

    /// To be taken before a change is carried out, and given to `notify` afterwards.
    ValueCache::Mark mark() { return m_cache.mark(); }

    /// Corrects the value cache and tells every observer of every item that the record holds. The
    /// answer is the number of call-backs made. While this thread holds the registry the record is
    /// copied and told after the registry is given back; the answer is then the number of
    /// call-backs that the observers registered now will get.
    unsigned notify(const ManageableData& record, ValueCache::Mark mark);

private:
    using CombinedRecords = std::map<MgmtAgentIfc*, std::unique_ptr<ManageableData>>;

    unsigned countCallbacks(const ManageableData& record);
    unsigned tellNow(const ManageableData& record, ValueCache::Mark mark);
    std::vector<MgmtAgentDetails> gatherObservers(const ManageableData& record,
                                                  const std::string& rootId, ValueCache::Mark mark);
    void addItem(ManageableData& target, const ManageableData& record, const std::string& rootId);
    void tellOne(MgmtAgentIfc& observer, ManageableData& record);

    AgentRegistry& m_registry;
    ValueCache& m_cache;
    const DxlCollection& m_master;
};

}  // namespace vireo
