#include "items/ItemWriter.h"

#include <unordered_set>
#include <utility>

#include "Boundary.h"
#include "MgmtAgentIfc.h"
#include "data/DataCollection.h"
#include "data/DxlResultSet.h"
#include "data/ManageableData.h"
#include "items/AgentRegistry.h"
#include "items/BegunWrite.h"
#include "items/ChangeNotifier.h"
#include "items/DasBridge.h"
#include "items/ItemCatalogue.h"
#include "items/ItemRecords.h"
#include "items/OwnItemKind.h"
#include "items/OwnItemWrites.h"
#include "items/OwnItems.h"
#include "items/RegistryHold.h"
#include "items/WriteBatches.h"

namespace vireo {
namespace {

constexpr unsigned kCallBit = 1;

/// Puts the nodes that were refused back to their defaults.
void restoreDefaults(ManageableData& record, const RejectionSpec& refusal) {
    const DxlDocumentPointer document = record.getDocument(refusal.rootId());
    const auto schema = document ? record.getSchema(document->schemaName()) : nullptr;
    if (schema) {
        record.putDocument(std::make_shared<const DxlDocument>(
            refusal.rootId(), document->select(refusal.nodePath())->restoreDefaults(*schema)));
    }
}

}  // namespace

/// The state of one write.
struct ItemWriter::Write {
    Write(ItemWriter& writer, ManageableData& writtenRecord, NotificationOrder::Change& underWay)
        : record(writtenRecord),
          change(underWay),
          store(writer.m_store),
          own(writer.m_ownItems, writtenRecord) {}

    ManageableData& record;
    NotificationOrder::Change& change;
    StoreUpdate store;
    OwnItemWrites own;
    WriteBatches batches;
    std::vector<std::string> storedIds;  ///< acknowledged by the store, not yet committed
    bool result = true;                  ///< of the items so far
};

ItemWriter::ItemWriter(ItemCatalogue& catalogue, const DataCollection& collections,
                       AgentRegistry& registry, DasBridge& store, ChangeNotifier& notifier,
                       OwnItems& ownItems)
    : m_catalogue(catalogue),
      m_collections(collections),
      m_registry(registry),
      m_store(store),
      m_notifier(notifier),
      m_ownItems(ownItems) {}

struct ItemWriter::Begun : BegunWrite {
    Begun(ItemWriter& itemWriter, ManageableData written)
        : writer(itemWriter),
          writtenRecord(std::move(written)),
          pending(itemWriter.m_notifier.begin()),
          write(itemWriter, writtenRecord, pending.order) {}

    bool isAccepted() const override { return write.result; }
    void commit() override { write.result = writer.commitStore(write) && write.result; }
    void tell() override { writer.tellObservers(writtenRecord, write.result, std::move(pending)); }
    const ManageableData& record() const override { return writtenRecord; }

    ItemWriter& writer;
    ManageableData writtenRecord;
    ChangeNotifier::Pending pending;
    Write write;
};

bool ItemWriter::isStoredItem(const ManageableData& record) const {
    const std::vector<std::string>& rootIds = record.rootIds();
    if (rootIds.size() != 1 || !record.getDocument(rootIds.front())) {
        return false;
    }
    const std::string& rootId = rootIds.front();
    const OwnItemKind kind = ownItemKind(rootId);
    return (kind == OwnItemKind::eStored || kind == OwnItemKind::ePhoneBusy) &&
           m_catalogue.findManagementId(rootId) == kOwnManagementId &&
           !m_catalogue.storedNodes(rootId).empty();
}

std::unique_ptr<BegunWrite> ItemWriter::begin(ManageableData record) {
    record.clearRejectReasons();
    auto begun = std::make_unique<Begun>(*this, std::move(record));
    begun->write.result = writeItem(begun->write, begun->writtenRecord.rootIds().front());
    return begun;
}

bool ItemWriter::isCollection(const std::string& rootId) const {
    return m_catalogue.findManagementId(rootId).empty() && !m_collections.empty(rootId);
}

bool ItemWriter::setData(ManageableData& record) {
    const std::vector<std::string> rootIds = record.rootIds();
    if (rootIds.empty()) {
        VCMS_LOG(kLogDebug, "SetData: no data to set");
        return false;
    }
    record.clearRejectReasons();  // of an earlier write; they say nothing about this one
    ChangeNotifier::Pending pending = m_notifier.begin();
    bool result = false;
    {
        std::optional<RegistryHold> hold;
        if (rootIds.size() > 1) {
            hold.emplace(m_registry.semaphore());
        }
        result = writeItems(record, rootIds, pending.order);
    }
    tellObservers(record, result, std::move(pending));
    return result;
}

bool ItemWriter::writeItems(ManageableData& record, const std::vector<std::string>& rootIds,
                            NotificationOrder::Change& change) {
    Write write(*this, record, change);
    for (const std::string& rootId : rootIds) {
        VCMS_LOG(kLogDebug, "SetData: RootId = \"%s\"", rootId.c_str());
        write.result = writeItem(write, rootId) && write.result;
    }
    bool result = write.own.flush() && write.result;
    result = write.batches.send(m_registry, record, change) && result;
    return commitStore(write) && result;
}

bool ItemWriter::writeItem(Write& write, const std::string& rootId) {
    if (m_catalogue.isCallFailingItem(rootId) && (m_ownItems.phoneBusyStatus() & kCallBit) != 0) {
        VCMS_LOG(kLogWarning, "Item value change not allowed for %s, phone is busy!\n",
                 rootId.c_str());
        ItemRecords::refuse(write.record, rootId, "Change not allowed: Phone is busy!");
        return false;
    }
    const std::string& managementId = m_catalogue.findManagementId(rootId);
    VCMS_LOG(kLogDebug, "SetData: Mgmt Id = \"%s\" for rootid = \"%s\"", managementId.c_str(),
             rootId.c_str());
    if (managementId.empty()) {
        return writeCollection(write, rootId);
    }
    if (!write.record.getDocument(rootId)) {
        // Deliberate: nothing to write is no failure.
        VCMS_LOG(kLogDebug, "setData - rootId = %s comes without a value", rootId.c_str());
        return true;
    }
    if (!ItemRecords::adoptSchema(m_catalogue, write.record, rootId)) {
        ItemRecords::refuse(write.record, rootId, RejectReasonsStrings::invalid_data);
        return false;
    }
    if (managementId == kOwnManagementId) {
        return writeOwnItem(write, rootId);
    }
    const MgmtAgentDetails owner = m_registry.findManageableProxy(managementId);
    if (owner.agent == nullptr) {
        return writeUnregistered(write, managementId, rootId);
    }
    if (!owner.flag) {
        return writeToAgent(write, *owner.agent, rootId);
    }
    write.batches.add(managementId, write.record, rootId);
    return true;
}

bool ItemWriter::writeCollection(Write& write, const std::string& rootId) {
    if (m_collections.empty(rootId)) {
        return false;  // Deliberate: an unknown item gets no refusal, only the false result.
    }
    VCMS_LOG(kLogDebug, "setData - rootId = %s (this is a collection id)", rootId.c_str());
    if (!write.result) {
        return false;  // Deliberate: a collection is not written behind an item that failed.
    }
    const std::vector<std::string> items = m_collections.items(rootId);
    ManageableData collection;
    ItemRecords::copyItems(write.record, collection, items);
    ItemRecords::copyItem(write.record, collection, rootId);
    collection.setRootId(rootId, nullptr);
    const bool result = m_collections.setData(collection);
    ItemRecords::copyItems(collection, write.record, items);
    write.record.addRejectReasons(collection.rejections());
    return result;
}

bool ItemWriter::writeOwnItem(Write& write, const std::string& rootId) {
    // Deliberate: the text names an agent although none is called.
    VCMS_LOG(kLogDebug, "Calling setData on management agent for rootId = %s", rootId.c_str());
    const bool result = writeOwnValue(write, rootId);
    write.change.tookEffect(rootId);
    return result;
}

bool ItemWriter::writeOwnValue(Write& write, const std::string& rootId) {
    const OwnItemKind kind = ownItemKind(rootId);
    if (OwnItemWrites::areOf(kind)) {
        return write.own.change(kind, rootId);
    }
    if (!store(write, rootId)) {
        ItemRecords::refuse(write.record, rootId, "Unknown");
        return false;
    }
    if (!m_catalogue.storedNodes(rootId).empty()) {
        write.storedIds.push_back(rootId);
    }
    return true;
}

bool ItemWriter::store(Write& write, const std::string& rootId) {
    const std::lock_guard lock(m_effects);
    const bool result = write.store.write(rootId, write.record);
    write.change.tookEffect(rootId);
    return result;
}

bool ItemWriter::writeToAgent(Write& write, MgmtAgentIfc& agent, const std::string& rootId) {
    ManageableData item;
    ItemRecords::copyItem(write.record, item, rootId);
    item.setRootId(rootId, nullptr);
    VCMS_LOG(kLogDebug, "Calling setData on management agent for rootId = %s", rootId.c_str());
    const bool result = guarded("setData of an agent", false, [&] { return agent.setData(item); });
    write.change.tookEffect(rootId);
    if (result) {
        return true;
    }
    if (!ItemRecords::takeRefusals(item, {rootId}, write.record)) {
        ItemRecords::refuse(write.record, rootId, "Unknown");
    }
    return false;
}

bool ItemWriter::writeUnregistered(Write& write, const std::string& managementId,
                                   const std::string& rootId) {
    if (m_catalogue.isUncachedUnlessRegistered(managementId)) {
        VCMS_LOG(kLogDebug,
                 "\nSetData: Not caching/notifying data change for unregistered mgmtId %s",
                 managementId.c_str());
        ItemRecords::refuse(write.record, rootId, "Service not registered");
        return false;
    }
    VCMS_LOG(kLogDebug, "\nSetData: %s not yet registered, rootId = %s", managementId.c_str(),
             rootId.c_str());
    const std::lock_guard lock(m_effects);
    m_catalogue.keepItem(write.record, rootId);
    write.change.tookEffect(rootId);
    return true;
}

bool ItemWriter::commitStore(Write& write) {
    if (write.store.commit()) {
        return true;
    }
    for (const std::string& rootId : write.storedIds) {
        ItemRecords::refuse(write.record, rootId, "Unknown");
    }
    return false;
}

void ItemWriter::tellObservers(const ManageableData& record, bool result,
                               ChangeNotifier::Pending pending) {
    if (result || record.rejections().empty()) {
        m_notifier.notify(record, std::move(pending));
        return;
    }
    ManageableData written(record);
    written.clearRejectReasons();
    std::unordered_set<std::string> refused;
    int number = 0;
    for (const RejectionSpec& refusal : record.rejections()) {
        restoreDefaults(written, refusal);
        refused.insert(refusal.rootId());
        VCMS_LOG(kLogError,
                 "setData: failure[%d] for setting rootId '%s', path '%s', failure message '%s'",
                 number++, refusal.rootId().c_str(), refusal.nodePath().c_str(),
                 refusal.reason().c_str());
    }
    written.removeRootIds(refused);
    m_notifier.notify(written, std::move(pending));
}

}  // namespace vireo
