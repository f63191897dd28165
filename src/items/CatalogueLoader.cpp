#include "items/CatalogueLoader.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>

#include "LogMacros.h"
#include "data/DataCollection.h"
#include "items/ParallelLists.h"

namespace vireo {
namespace {

constexpr const char* kNeverCachedTags[] = {
    "time",
    "simple-time",
    "simple-date",
    "codecSettings",
    "canonicalDialSettings",
    "core-dump-file-names",
    "monitor-memory-usage",
    "core-dump-delete",
    "bt-trusted-devices",
    "bt-blacklisted-devices",
    "bt-connected-devices",
    "tcAutoClear",
    "tcFileSize",
    "memory-monitor-remote-callback",
    // Deliberate: one tag, as written; neither "tdm-64-RAM" nor "phone-busy-status" is meant.
    "tdm-64-RAMphone-busy-status",
};

/// Whether the row has its first `count` columns; a warning if not.
template <std::size_t Count>
bool isComplete(const ParallelLists<Count>& row, std::size_t count, const DxlDocument& list) {
    if (!row.present(count)) {
        VCMS_LOG(kLogWarning, "VCMS - a row of %s skipped: it lacks an element; it begins with %s",
                 list.getName().c_str(), row.has(0) ? row[0].c_str() : "nothing");
        return false;
    }
    return true;
}

}  // namespace

CatalogueLoader::CatalogueLoader(DxlCollection& master, DxlCollection& callFailing,
                                 DataCollection& collections, ItemMaps& maps)
    : m_master(master), m_callFailing(callFailing), m_collections(collections), m_maps(maps) {}

bool CatalogueLoader::load() {
    m_maps.neverCachedTags.insert(std::begin(kNeverCachedTags), std::end(kNeverCachedTags));
    if (!importDocuments()) {
        return false;
    }
    digestItemMaps();
    digestTables();
    loadDataCollections();
    digestMappings();
    listTableKeptItems();
    readCallFailingItems();
    return true;
}

bool CatalogueLoader::importDocuments() {
    VCMS_LOG(kLogDebug, "VCMS - importing vcmsInit.xml");
    m_master.importFromFile("vcmsInit.xml");
    m_services = m_master.getDocument("vcmsServiceList");
    if (!m_services) {
        VCMS_LOG(kLogDebug, "VCMS - No Doc List found");
        return false;
    }
    VCMS_LOG(kLogDebug, "VCMS - importing Service Config Files");
    for (ParallelLists<1> files(*m_services, {"/service/import"}); files.next();) {
        if (files.has(0)) {
            VCMS_LOG(kLogDebug, "VCMS - importing File %s", files[0].c_str());
            m_master.importFromFile(files[0]);
        }
    }
    return true;
}

void CatalogueLoader::digestItemMaps() {
    const auto schema = m_master.makeSchema(kMasterItemMap);
    ParallelLists<2> services(*m_services, {"/service/managementId", "/service/itemMap"});
    VCMS_LOG(kLogDebug, "VCMS - digest the item maps ");
    while (services.next()) {
        if (!services.present(2)) {
            continue;
        }
        VCMS_LOG(kLogDebug, "VCMS - processing %s", services[1].c_str());
        if (const auto itemMap = m_master.getDocument(services[1])) {
            VCMS_LOG(kLogDebug, "VCMS - digesting %s ", services[1].c_str());
            digestItemMap(*schema, services[0], *itemMap);
        }
    }
    noteUncachedServices();
    VCMS_LOG(kLogDebug, "VCMS - make the masterItemMap document");
    schema->finish();
    m_master.deleteDocument(kMasterItemMap);  // the name is the service's, whatever a file holds
    m_maps.masterItemMap = m_master.makeDocument(kMasterItemMap, kMasterItemMap);
    warnOfUnknownSchemas();
}

void CatalogueLoader::warnOfUnknownSchemas() const {
    std::unordered_set<std::string> warned;
    for (const DxlNode::Pointer& item : m_maps.masterItemMap->root()->children()) {
        const DxlNode* schema = item->child("schema");
        if (schema != nullptr && !m_master.getSchema(schema->text()) &&
            warned.insert(schema->text()).second) {
            VCMS_LOG(kLogWarning,
                     "VCMS - unknown schema %s: %s and other items of it cannot be read; add the "
                     "schema and start again",
                     schema->text().c_str(), item->getName().c_str());
        }
    }
}

void CatalogueLoader::digestItemMap(DxlSchema& itemMapSchema, const std::string& managementId,
                                    const DxlDocument& itemMap) {
    const DxlDataType* string = DxlSchema::findDataType("string");
    for (ParallelLists<2> items(itemMap, {"/item/rootId", "/item/schema"}); items.next();) {
        if (!isComplete(items, 2, itemMap)) {
            continue;
        }
        // An item under the name of a configuration document could delete or overwrite it.
        if (items[0] == kMasterItemMap || m_master.getDocument(items[0])) {
            VCMS_LOG(kLogWarning, "VCMS - item %s of %s skipped: the name is reserved",
                     items[0].c_str(), itemMap.getName().c_str());
            continue;
        }
        DxlSchemaNode* item = itemMapSchema.makeBranchNode(itemMapSchema.buildRoot(), items[0], 1);
        if (item == nullptr) {
            VCMS_LOG(kLogWarning, "VCMS - item %s of %s skipped: not an item name",
                     items[0].c_str(), itemMap.getName().c_str());
            continue;
        }
        itemMapSchema.makeDataNode(item, "managementId", 1, string, managementId);
        itemMapSchema.makeDataNode(item, "schema", 1, string, items[1]);
    }
}

void CatalogueLoader::noteUncachedServices() {
    VCMS_LOG(kLogDebug, "VCMS - digest cachable management IDs when not registered ");
    ParallelLists<2> services(*m_services,
                              {"/service/managementId", "/service/dontCacheUnlessRegistered"});
    while (services.next()) {
        if (!services.present(2)) {
            continue;
        }
        VCMS_LOG(kLogDebug, "VCMS - processing %s (value = %s)", services[0].c_str(),
                 services[1].c_str());
        if (services[1] == "true") {
            m_maps.uncachedUnlessRegistered.insert(services[0]);
        }
    }
}

void CatalogueLoader::digestTables() {
    VCMS_LOG(kLogDebug, "VCMS - process DAS table item maps");
    const auto tables = m_master.getDocument("VcmsTableList");
    if (!tables) {
        return;
    }
    ParallelLists<3> rows(*tables,
                          {"/table/dasSchemaName", "/table/dasIndexName", "/table/itemMap"});
    while (rows.next()) {
        if (!isComplete(rows, 3, *tables)) {
            continue;
        }
        m_maps.indexColumns.insert_or_assign(rows[0], rows[1]);
        if (const auto items = m_master.getDocument(rows[2])) {
            VCMS_LOG(kLogDebug, "VCMS - digesting %s ", rows[2].c_str());
            digestTable(rows[0], *items);
        }
    }
}

void CatalogueLoader::digestTable(const std::string& table, const DxlDocument& items) {
    ParallelLists<3> rows(items, {"/item/rootId", "/item/dasIndexValue", "/item/dasItemName"});
    while (rows.next()) {
        if (isComplete(rows, 3, items)) {
            // Deliberate: a table-kept item is keyed with its root id in both fields.
            StoreAddress& address = m_maps.storeAddresses[NodeId{rows[0], rows[0]}];
            address.table = table;
            address.indexValue = rows[1];
            address.column = rows[2];
        }
    }
}

void CatalogueLoader::loadDataCollections() {
    // Deliberate: spelled so.
    VCMS_LOG(kLogDebug, "VCMS - process Data Colelctions");
    const auto collections = m_master.getDocument("VcmsDataCollection");
    if (!collections) {
        return;
    }
    ParallelLists<2> rows(*collections,
                          {"/collection/collectionId", "/collection/collectionDataList"});
    while (rows.next()) {
        const auto members = rows.present(2) ? m_master.getDocument(rows[1]) : nullptr;
        if (!members) {
            continue;
        }
        VCMS_LOG(kLogDebug, "VCMS - digesting %s ", rows[1].c_str());
        for (ParallelLists<1> ids(*members, {"/rootId"}); ids.next();) {
            if (ids.has(0)) {
                m_collections.add(rows[0], ids[0]);
            }
        }
    }
    for (const std::string& name : m_collections.names()) {
        if (m_maps.masterItemMap && m_maps.masterItemMap->root()->child(name) != nullptr) {
            m_collections.addItem(name);
        }
    }
}

void CatalogueLoader::digestMappings() {
    const auto mappings = m_master.getDocument("VcmsToDasMapping");
    if (!mappings) {
        return;
    }
    ParallelLists<5> rows(*mappings, {"/item/rootId", "/item/nodeId", "/item/dasSchemaName",
                                      "/item/dasItemName", "/item/default"});
    while (rows.next()) {
        if (!isComplete(rows, 4, *mappings)) {
            continue;
        }
        const auto [address, isNew] = m_maps.storeAddresses.try_emplace(NodeId{rows[0], rows[1]});
        std::vector<std::string>& nodes = m_maps.storedNodes[rows[0]];
        // A row that comes again, or maps a node that a table keeps, replaces the address; the node
        // is listed once.
        if (isNew || std::find(nodes.begin(), nodes.end(), rows[1]) == nodes.end()) {
            nodes.push_back(rows[1]);
        }
        address->second.table = rows[2];
        address->second.column = rows[3];
        if (rows.has(4)) {
            address->second.defaultValue = rows[4];
        }
    }
}

void CatalogueLoader::listTableKeptItems() {
    for (const auto& [node, address] : m_maps.storeAddresses) {
        if (node.rootId == node.nodeId) {
            // An item without mapped nodes has just the one that its table keeps.
            m_maps.storedNodes.try_emplace(node.rootId, std::vector{node.nodeId});
        }
    }
}

void CatalogueLoader::readCallFailingItems() {
    VCMS_LOG(kLogDebug,
             "VCMS - retrieving call failing VCMS items: reading from file CallFailingItems.xml");
    m_callFailing.importFromFile("CallFailingItems.xml");
    if (const auto items = m_callFailing.getDocument("CallFailingVcmsItems")) {
        for (ParallelLists<1> ids(*items, {"/item/rootId"}); ids.next();) {
            if (ids.has(0)) {
                m_maps.callFailingItems.insert(ids[0]);
            }
        }
    }
}

}  // namespace vireo
