#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "MgmtAgentDetails.h"
#include "data/DxlDocument.h"
#include "items/ValueCache.h"

namespace vireo {

class AgentRegistry;
class DxlCollection;
class DxlSchema;
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

    /// One changed item, whatever becomes of the record that it came with.
    struct Item {
        DxlDocumentPointer document;
        std::shared_ptr<const DxlSchema> schema;  ///< may be null
    };

    void correctCache(const ManageableData& record, ValueCache::Mark mark);
    unsigned countCallbacks(const ManageableData& record);
    unsigned tellNow(const ManageableData& record);
    unsigned tellOfItem(const Item& item, const std::vector<MgmtAgentDetails>& observers,
                        CombinedRecords& combinedRecords);
    std::vector<MgmtAgentDetails> gatherObservers(const std::string& rootId);
    std::optional<Item> itemOf(const ManageableData& record, const std::string& rootId) const;
    static void addItem(ManageableData& target, const Item& item);
    void tellOne(MgmtAgentIfc& observer, ManageableData& record);

    AgentRegistry& m_registry;
    ValueCache& m_cache;
    const DxlCollection& m_master;
};

}  // namespace vireo
