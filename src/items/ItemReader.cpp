#include "items/ItemReader.h"

#include <vector>

#include "Boundary.h"
#include "MgmtAgentIfc.h"
#include "data/DataCollection.h"
#include "data/ManageableData.h"
#include "items/AgentRegistry.h"
#include "items/DasBridge.h"
#include "items/ItemCatalogue.h"
#include "items/ItemRecords.h"
#include "items/OwnItemKind.h"
#include "items/OwnItems.h"
#include "items/ValueCache.h"

namespace vireo {

ItemReader::ItemReader(ItemCatalogue& catalogue, const DataCollection& collections,
                       AgentRegistry& registry, DasBridge& store, ValueCache& cache,
                       OwnItems& ownItems)
    : m_catalogue(catalogue),
      m_collections(collections),
      m_registry(registry),
      m_store(store),
      m_cache(cache),
      m_ownItems(ownItems) {}

bool ItemReader::getData(ManageableData& record) {
    VCMS_LOG(kLogDebug, "getData: RootId = %s", record.getRootId().c_str());
    const std::size_t count = record.rootIds().size();
    if (count == 0) {
        VCMS_LOG(kLogDebug, "getData: no data to get");
        return false;
    }
    bool result = true;
    Requests requests;
    for (std::size_t i = 0; i < count; ++i) {  // reading may list further ones behind these
        const std::string rootId = record.rootIds()[i];
        VCMS_LOG(kLogDebug, "getData: RootId = \"%s\"", rootId.c_str());
        result = readItem(record, rootId, requests) && result;
    }
    for (auto& [managementId, request] : requests) {
        result = askOwner(managementId, request, record) && result;
    }
    return result;
}

bool ItemReader::readItem(ManageableData& record, const std::string& rootId, Requests& requests) {
    const std::string& managementId = m_catalogue.findManagementId(rootId);
    VCMS_LOG(kLogDebug, "getData: Mgmt Id = \"%s\" for rootid = \"%s\"", managementId.c_str(),
             rootId.c_str());
    if (managementId.empty()) {
        return m_collections.empty(rootId) ? readUnmapped(record, rootId)
                                           : readCollection(record, rootId);
    }
    bool result = true;
    const std::string schemaName = m_catalogue.findSchemaName(rootId);
    VCMS_LOG(kLogDebug, "getData - rootId = %s schemaName = %s", rootId.c_str(),
             schemaName.c_str());
    if (schemaName.empty()) {
        VCMS_LOG(kLogDebug, "getData no schemaname found for - rootId = %s", rootId.c_str());
        result = false;
    } else if (!m_catalogue.master().getSchema(schemaName)) {
        VCMS_LOG(kLogDebug, "getData no schema found for - schema name = %s", schemaName.c_str());
        result = false;
    }
    if (managementId == kOwnManagementId) {
        return readOwnItem(record, rootId, schemaName) && result;
    }
    const MgmtAgentDetails owner = m_registry.findManageableProxy(managementId);
    if (owner.agent == nullptr) {
        VCMS_LOG(kLogDebug, "\ngetData: %s not yet registered, rootId = %s", managementId.c_str(),
                 rootId.c_str());
        return readUnregistered(record, rootId, schemaName) && result;
    }
    if (!owner.flag) {
        return readFromAgent(*owner.agent, record, rootId, schemaName) && result;
    }
    ManageableData& request = requests[managementId];
    prepare(request, record, rootId, schemaName);
    request.addRootId(rootId, nullptr);
    return result;
}

void ItemReader::prepare(ManageableData& item, const ManageableData& record,
                         const std::string& rootId, const std::string& schemaName) {
    if (!item.getSchema(schemaName)) {
        item.copySchema(schemaName, m_catalogue.master());
    }
    // What the caller sends along is a start, if it is a value of this item at all.
    if (item.copyDocument(rootId, record) && !ItemRecords::adoptSchema(m_catalogue, item, rootId)) {
        item.removeRootId(rootId);
    }
}

bool ItemReader::readOwnItem(ManageableData& record, const std::string& rootId,
                             const std::string& schemaName) {
    if (!record.getDocument(rootId) && record.copySchema(schemaName, m_catalogue.master())) {
        return readOwnValue(record, rootId, schemaName);
    }
    // What the caller sends along must not get in the way of the answer.
    ManageableData item;
    prepare(item, record, rootId, schemaName);
    item.setRootId(rootId, nullptr);
    const bool result = readOwnValue(item, rootId, schemaName);
    record.overlay(item);
    return result;
}

bool ItemReader::readOwnValue(ManageableData& item, const std::string& rootId,
                              const std::string& schemaName) {
    std::string value;
    switch (ownItemKind(rootId)) {
        case OwnItemKind::eLockDown:
            if (!m_ownItems.readLockedDown(rootId, value)) {
                return false;
            }
            break;
        case OwnItemKind::eFileRequest:
            if (!m_ownItems.readFileRequest(rootId, value)) {
                return false;
            }
            break;
        case OwnItemKind::ePhoneBusy:
            value = m_ownItems.phoneBusyStatus() != 0 ? "true" : "false";
            VCMS_LOG(kLogDebug,
                     "VireoClientMgmt::getData() phone-busy-status phoneStatusValue is %s",
                     value.c_str());
            break;
        case OwnItemKind::eMemoryWarning:
        case OwnItemKind::eStored:
            return m_store.getDasData(rootId, schemaName, item);
    }
    if (!item.getDocument(rootId)) {
        item.makeDocument(schemaName, rootId);
    }
    return item.populate(rootId, value);
}

bool ItemReader::readUnregistered(ManageableData& record, const std::string& rootId,
                                  const std::string& schemaName) {
    const auto document = m_catalogue.cachedOrDefault(rootId, schemaName);
    if (!document) {
        return false;
    }
    if (!record.getSchema(document->schemaName())) {
        record.copySchema(document->schemaName(), m_catalogue.master());
    }
    record.putDocument(document);
    return true;
}

bool ItemReader::readFromAgent(MgmtAgentIfc& agent, ManageableData& record,
                               const std::string& rootId, const std::string& schemaName) {
    ManageableData item;
    prepare(item, record, rootId, schemaName);
    item.setRootId(rootId, nullptr);
    VCMS_LOG(kLogDebug, "Calling getData on management agent for rootId = %s", rootId.c_str());
    const bool result = guarded("getData of an agent", false, [&] { return agent.getData(item); });
    if (result) {
        ItemRecords::takeItem(item, m_catalogue.master(), record, rootId);
    }
    return result;
}

bool ItemReader::askOwner(const std::string& managementId, ManageableData& request,
                          ManageableData& record) {
    const std::vector<std::string> wanted = request.rootIds();
    const MgmtAgentDetails owner = m_registry.findManageableProxy(managementId);
    const bool result = owner.agent != nullptr && guarded("getData of an agent", false, [&] {
                            return owner.agent->getData(request);
                        });
    if (!result) {
        VCMS_LOG(kLogWarning, "getData(): requesting data from mgmtId(%s) failed for request(%s)",
                 managementId.c_str(), request.serialize().c_str());
        return false;
    }
    VCMS_LOG(kLogDump, "getData(): requesting data from mgmtId(%s) succeeded, result(%s)",
             managementId.c_str(), request.serialize().c_str());
    for (const std::string& rootId : wanted) {
        ItemRecords::takeItem(request, m_catalogue.master(), record, rootId);
    }
    return true;
}

bool ItemReader::readCollection(ManageableData& record, const std::string& rootId) {
    VCMS_LOG(kLogDebug, "getData - rootId = %s (this is a collection id)", rootId.c_str());
    const std::vector<std::string> items = m_collections.items(rootId);
    ManageableData collection;
    ItemRecords::copyItems(record, collection, items);
    collection.setRootId(rootId, nullptr);
    const bool result = m_collections.getData(collection);
    ItemRecords::copyItems(collection, record, items);
    record.addRejectReasons(collection.rejections());
    return result;
}

bool ItemReader::readUnmapped(ManageableData& record, const std::string& rootId) {
    const auto document = m_catalogue.master().getDocument(rootId);
    if (!document) {
        VCMS_LOG(kLogError, "getData: rootId = %s not found", rootId.c_str());
        return false;
    }
    VCMS_LOG(kLogDebug, "\ngetData: rootId = %s found in VCMS collection", rootId.c_str());
    if (!record.getSchema(document->schemaName())) {
        record.copySchema(document->schemaName(), m_catalogue.master());
    }
    record.putDocument(document);
    return true;
}

bool ItemReader::getData(const std::string& tag, std::string& value) {
    VCMS_LOG(kLogDebug, "getData( std::string vcmsTag %s, std::string& value %s )", tag.c_str(),
             value.c_str());
    if (m_catalogue.isCacheable(tag) && m_cache.fetch(tag, value)) {
        return true;
    }
    const ValueCache::Mark mark = m_cache.mark();
    ManageableData record;
    record.addRootId(tag, nullptr);
    if (!getData(record) || !record.interogate(tag, tag, value)) {
        VCMS_LOG(kLogError, "getData failed... %s,%s", tag.c_str(), value.c_str());
        return false;
    }
    m_cache.fill(mark, tag, value);
    return true;
}

std::string ItemReader::getValueFromVCMS(const std::string& tag) {
    ManageableData record;
    record.setRootId(tag, nullptr);
    if (getData(record)) {
        if (const DataNode node = record.interogate(tag)) {
            return node->value();
        }
    }
    VCMS_LOG(kLogError, "getValueFromVCMS() failed for tag '%s'", tag.c_str());
    return "???";
}

}  // namespace vireo
