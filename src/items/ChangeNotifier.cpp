#include "items/ChangeNotifier.h"

#include <set>
#include <utility>

#include "Boundary.h"
#include "MgmtAgentIfc.h"
#include "data/ManageableData.h"
#include "items/AgentRegistry.h"

namespace vireo {

ChangeNotifier::ChangeNotifier(AgentRegistry& registry, ValueCache& cache,
                               const DxlCollection& master)
    : m_registry(registry), m_cache(cache), m_master(master), m_order(*this) {}

void ChangeNotifier::notify(const ManageableData& record, Pending pending) {
    tellInTurn(record, std::move(pending));
}

unsigned ChangeNotifier::announce(const ManageableData& record, Pending pending) {
    const std::optional<unsigned> told = tellInTurn(record, std::move(pending));
    return told ? *told : count(record);
}

/// The number of call-backs made; empty when they are not all made yet.
std::optional<unsigned> ChangeNotifier::tellInTurn(const ManageableData& record, Pending pending) {
    // All of it, and before anybody is told: whoever reads because it was told must not get an old
    // value.
    correctCache(record, pending.mark);
    RegistrySemaphore& semaphore = m_registry.semaphore();
    if (!semaphore.isMine()) {
        return pending.order.tell(record);
    }
    pending.order.tookEffect(record);
    const auto order = std::make_shared<NotificationOrder::Change>(std::move(pending.order));
    semaphore.afterGive([order, copy = record] { order->tell(copy); });
    return std::nullopt;
}

void ChangeNotifier::correctCache(const ManageableData& record, ValueCache::Mark mark) {
    for (const std::string& rootId : record.rootIds()) {
        if (!m_cache.takes(rootId)) {
            continue;
        }
        std::string value;
        const bool hasValue = record.interogate(rootId, rootId, value);
        m_cache.correct(mark, rootId, hasValue ? std::optional(std::move(value)) : std::nullopt);
    }
}

unsigned ChangeNotifier::count(const ManageableData& record) {
    unsigned callbacks = 0;
    std::set<MgmtAgentIfc*> combined;
    std::vector<MgmtAgentDetails> observers;
    for (const std::string& rootId : record.rootIds()) {
        if (!record.getDocument(rootId)) {
            continue;
        }
        observers.clear();
        m_registry.appendObservers(rootId, observers);
        m_registry.appendObservers(kAllData, observers);
        for (const MgmtAgentDetails& observer : observers) {
            callbacks += !observer.flag || combined.insert(observer.agent).second ? 1U : 0U;
        }
    }
    return callbacks;
}

std::vector<MgmtAgentDetails> ChangeNotifier::gatherObservers(const std::string& rootId) {
    std::vector<MgmtAgentDetails> observers;
    const RegistryHold hold(m_registry.semaphore());
    if (m_registry.getNumberObservers(rootId) == 1) {
        const std::size_t count = m_registry.appendObservers(rootId, observers);
        VCMS_LOG(kLogDebug, "VCMS notifyObservers - No of %s Observers: %d", rootId.c_str(),
                 static_cast<int>(count));
    }
    const std::size_t count = m_registry.appendObservers(kAllData, observers);
    VCMS_LOG(kLogDebug, "VCMS notifyObservers - No of AllData Observers: %d",
             static_cast<int>(count));
    return observers;
}

unsigned ChangeNotifier::tell(const ManageableData& record) {
    VCMS_LOG(kLogDebug, "VCMS notifyObservers: RootId = %s", record.getRootId().c_str());
    unsigned callbacks = 0;
    CombinedRecords combinedRecords;
    std::vector<std::string> rootIds;
    record.getRootIds(rootIds);  // an observer may be the writer, and change its record when told
    for (const std::string& rootId : rootIds) {
        VCMS_LOG(kLogDebug, "VCMS notifyObservers - Data changed: %s", rootId.c_str());
        const auto observers = gatherObservers(rootId);
        const auto item = itemOf(record, rootId);
        if (!observers.empty() && item) {
            callbacks += tellOfItem(*item, observers, combinedRecords);
        }
    }
    for (auto& [agent, combined] : combinedRecords) {
        tellOne(*agent, *combined);
        ++callbacks;
        VCMS_LOG(kLogDebug,
                 "VCMS notifyObservers - Observer notified of data change for multiple items");
    }
    return callbacks;
}

unsigned ChangeNotifier::tellOfItem(const Item& item,
                                    const std::vector<MgmtAgentDetails>& observers,
                                    CombinedRecords& combinedRecords) {
    unsigned count = 0;
    const std::string& rootId = item.document->getName();
    ManageableData single;
    for (const MgmtAgentDetails& observer : observers) {
        if (observer.flag) {
            auto& combined = combinedRecords[observer.agent];
            if (!combined) {
                combined = std::make_unique<ManageableData>();
            }
            addItem(*combined, item);
            combined->addRootId(rootId, nullptr);
            continue;
        }
        // Those in other processes leave the record as it is: it is made and written once for all
        // of them. Who changes it does so to a record of its own.
        if (!single.keepsText()) {
            single.clearAll();
            addItem(single, item);
            single.setRootId(rootId, nullptr);
            if (observers.size() > 1) {
                single.keepText();
            }
        }
        tellOne(*observer.agent, single);
        ++count;
        VCMS_LOG(kLogDebug, "VCMS notifyObservers - Observer notified of data change for %s",
                 rootId.c_str());
    }
    return count;
}

std::optional<ChangeNotifier::Item> ChangeNotifier::itemOf(const ManageableData& record,
                                                           const std::string& rootId) const {
    DxlDocumentPointer document = record.getDocument(rootId);
    if (!document) {
        return std::nullopt;
    }
    auto schema = record.getSchema(document->schemaName());
    if (!schema) {
        schema = m_master.getSchema(document->schemaName());
    }
    return Item{std::move(document), std::move(schema)};
}

void ChangeNotifier::addItem(ManageableData& target, const Item& item) {
    if (item.schema && !target.getSchema(item.schema->getName())) {
        target.putSchema(item.schema);
    }
    target.putDocument(item.document);
}

void ChangeNotifier::tellOne(MgmtAgentIfc& observer, ManageableData& record) {
    guarded("manageableDataChanged", false, [&] { return observer.manageableDataChanged(record); });
}

}  // namespace vireo
