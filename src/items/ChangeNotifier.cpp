#include "items/ChangeNotifier.h"

#include <set>

#include "Boundary.h"
#include "MgmtAgentIfc.h"
#include "data/ManageableData.h"
#include "items/AgentRegistry.h"

namespace vireo {

ChangeNotifier::ChangeNotifier(AgentRegistry& registry, ValueCache& cache,
                               const DxlCollection& master)
    : m_registry(registry), m_cache(cache), m_master(master) {}

unsigned ChangeNotifier::notify(const ManageableData& record, ValueCache::Mark mark) {
    RegistrySemaphore& semaphore = m_registry.semaphore();
    if (!semaphore.isMine()) {
        return tellNow(record, mark);
    }
    const unsigned count = countCallbacks(record);
    semaphore.afterGive([this, copy = record, mark] { tellNow(copy, mark); });
    return count;
}

unsigned ChangeNotifier::countCallbacks(const ManageableData& record) {
    unsigned count = 0;
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
            count += !observer.flag || combined.insert(observer.agent).second ? 1 : 0;
        }
    }
    return count;
}

std::vector<MgmtAgentDetails> ChangeNotifier::gatherObservers(const ManageableData& record,
                                                              const std::string& rootId,
                                                              ValueCache::Mark mark) {
    std::vector<MgmtAgentDetails> observers;
    const RegistryHold hold(m_registry.semaphore());
    std::string value;
    // Before anybody is told: whoever reads because it was told must not get the old value.
    const bool hasValue = record.interogate(rootId, rootId, value);
    m_cache.correct(mark, rootId, hasValue ? std::optional(value) : std::nullopt);
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

unsigned ChangeNotifier::tellNow(const ManageableData& record, ValueCache::Mark mark) {
    VCMS_LOG(kLogDebug, "VCMS notifyObservers: RootId = %s", record.getRootId().c_str());
    unsigned count = 0;
    CombinedRecords combinedRecords;
    // A copy: an observer may be the writer, who is free to change the record while it is told.
    std::vector<std::string> rootIds;
    record.getRootIds(rootIds);
    for (const std::string& rootId : rootIds) {
        VCMS_LOG(kLogDebug, "VCMS notifyObservers - Data changed: %s", rootId.c_str());
        const auto observers = gatherObservers(record, rootId, mark);
        if (observers.empty() || !record.getDocument(rootId)) {
            continue;
        }
        for (const MgmtAgentDetails& observer : observers) {
            if (observer.flag) {
                auto& combined = combinedRecords[observer.agent];
                if (!combined) {
                    combined = std::make_unique<ManageableData>();
                }
                addItem(*combined, record, rootId);
                combined->addRootId(rootId, nullptr);
                continue;
            }
            ManageableData single;
            addItem(single, record, rootId);
            single.setRootId(rootId, nullptr);
            tellOne(*observer.agent, single);
            ++count;
            VCMS_LOG(kLogDebug, "VCMS notifyObservers - Observer notified of data change for %s",
                     rootId.c_str());
        }
    }
    for (auto& [agent, combined] : combinedRecords) {
        tellOne(*agent, *combined);
        ++count;
        VCMS_LOG(kLogDebug,
                 "VCMS notifyObservers - Observer notified of data change for multiple items");
    }
    return count;
}

void ChangeNotifier::addItem(ManageableData& target, const ManageableData& record,
                             const std::string& rootId) {
    const std::string& schemaName = record.getDocument(rootId)->schemaName();
    if (!target.getSchema(schemaName) && !target.copySchema(schemaName, record)) {
        target.copySchema(schemaName, m_master);
    }
    target.copyDocument(rootId, record);
}

void ChangeNotifier::tellOne(MgmtAgentIfc& observer, ManageableData& record) {
    guarded("manageableDataChanged", false, [&] { return observer.manageableDataChanged(record); });
}

}  // namespace vireo
