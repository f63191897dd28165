#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "MgmtAgentDetails.h"
#include "data/DxlDocument.h"
#include "items/NotificationOrder.h"
#include "items/ValueCache.h"

namespace vireo {

class AgentRegistry;
class DxlCollection;
class DxlSchema;
class ManageableData;

/// Tells observers of changed items. Safe from every thread; observers are called without a lock,
/// and hear of the changes of one item in the order in which these took effect.
class ChangeNotifier : private NotificationOrder::Audience {
public:
    /// A change that is being carried out. Belongs to one thread.
    struct Pending {
        ValueCache::Mark mark;
        NotificationOrder::Change order;
    };

    ChangeNotifier(AgentRegistry& registry, ValueCache& cache, const DxlCollection& master);

    /// To be called before a change is carried out; the answer is given to `notify` afterwards.
    Pending begin() { return {m_cache.mark(), NotificationOrder::Change(m_order)}; }

    /// Corrects the value cache and tells every observer of every item that the record holds. While
    /// this thread holds the registry the record is copied and told after the registry is given
    /// back, or sooner when too many wait for that.
    void notify(const ManageableData& record, Pending pending);
    /// The same; answers the number of call-backs made, or, when they are made later or by another
    /// thread, of those that the observers registered now will get.
    unsigned announce(const ManageableData& record, Pending pending);

private:
    using CombinedRecords = std::map<MgmtAgentIfc*, std::unique_ptr<ManageableData>>;

    /// One changed item, whatever becomes of the record that it came with.
    struct Item {
        DxlDocumentPointer document;
        std::shared_ptr<const DxlSchema> schema;  ///< may be null
    };

    void correctCache(const ManageableData& record, ValueCache::Mark mark);
    std::optional<unsigned> tellInTurn(const ManageableData& record, Pending pending);
    unsigned count(const ManageableData& record);
    unsigned tell(const ManageableData& record) override;
    unsigned tellOfItem(const Item& item, const std::vector<MgmtAgentDetails>& observers,
                        CombinedRecords& combinedRecords);
    std::vector<MgmtAgentDetails> gatherObservers(const std::string& rootId);
    std::optional<Item> itemOf(const ManageableData& record, const std::string& rootId) const;
    static void addItem(ManageableData& target, const Item& item);
    void tellOne(MgmtAgentIfc& observer, ManageableData& record);

    AgentRegistry& m_registry;
    ValueCache& m_cache;
    const DxlCollection& m_master;
    NotificationOrder m_order;
};

}  // namespace vireo
