#include "items/CatalogueLoader.h"

#include <iterator>
#include <optional>

#include "LogMacros.h"
#include "data/DataCollection.h"
#include "data/DxlRows.h"
#include "data/XmlText.h"

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
bool isComplete(const DxlRows& row, std::size_t count, const DxlDocument& list) {
    if (!row.hasFirst(count)) {
        VCMS_LOG(kLogWarning, "VCMS - a row of %s skipped: it lacks an element; it begins with %s",
                 list.getName().c_str(), row.has(0) ? row.text(0).c_str() : "nothing");
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
    m_maps.places.finish();
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
    for (DxlRows files(*m_services, "service", {"import"}); files.next();) {
        if (files.has(0)) {
            const std::string name = files.text(0);
            VCMS_LOG(kLogDebug, "VCMS - importing File %s", name.c_str());
            m_master.importFromFile(name);
        }
    }
    return true;
}

void CatalogueLoader::digestItemMaps() {
    for (const DxlDocumentPointer& document : m_master.documents()) {
        m_documentNames.insert(document->getName());
    }
    m_documentNames.insert(kMasterItemMap);
    m_maps.items->reserve(countRows(*m_services, "service", "itemMap"));
    DxlRows services(*m_services, "service", {"managementId", "itemMap"});
    VCMS_LOG(kLogDebug, "VCMS - digest the item maps ");
    while (services.next()) {
        if (!services.hasFirst(2)) {
            continue;
        }
        const std::string name = services.text(1);
        VCMS_LOG(kLogDebug, "VCMS - processing %s", name.c_str());
        if (const auto itemMap = m_master.getDocument(name)) {
            VCMS_LOG(kLogDebug, "VCMS - digesting %s ", name.c_str());
            digestItemMap(services.text(0), *itemMap);
        }
    }
    m_documentNames.clear();  // the documents may go now
    noteUncachedServices();
    VCMS_LOG(kLogDebug, "VCMS - make the masterItemMap document");
    // The name is the service's, whatever a file holds.
    m_master.putSchema(std::make_shared<const DxlSchema>(m_maps.items));
    m_master.putDocument(std::make_shared<const DxlDocument>(kMasterItemMap, m_maps.items));
    warnOfUnknownSchemas();
}

std::size_t CatalogueLoader::countRows(const DxlDocument& list, std::string_view row,
                                       std::string_view column) const {
    std::size_t count = 0;
    for (DxlRows names(list, row, {column}); names.next();) {
        if (const auto document = m_master.getDocument(names.text(0))) {
            count += DxlRows::count(*document);
        }
    }
    return count;
}

void CatalogueLoader::warnOfUnknownSchemas() const {
    m_maps.items->forEachSchema([this](const std::string& schema, std::string_view tag) {
        if (!m_master.getSchema(schema)) {
            VCMS_LOG(kLogWarning,
                     "VCMS - unknown schema %s: %s and other items of it cannot be read; add the "
                     "schema and start again",
                     schema.c_str(), std::string(tag).c_str());
        }
    });
}

void CatalogueLoader::digestItemMap(const std::string& managementId, const DxlDocument& itemMap) {
    for (DxlRows items(itemMap, "item", {"rootId", "schema"}); items.next();) {
        if (isComplete(items, 2, itemMap) && isFreeName(items[0], itemMap)) {
            m_maps.items->add(items[0], managementId, items[1]);
        }
    }
}

bool CatalogueLoader::isFreeName(std::string_view tag, const DxlDocument& itemMap) const {
    // An item under the name of a configuration document could delete or overwrite it.
    const bool isReserved = m_documentNames.contains(tag);
    if (isReserved || !XmlText::isName(tag)) {
        VCMS_LOG(kLogWarning, "VCMS - item %s of %s skipped: %s", std::string(tag).c_str(),
                 itemMap.getName().c_str(),
                 isReserved ? "the name is reserved" : "not an item name");
        return false;
    }
    return true;
}

void CatalogueLoader::noteUncachedServices() {
    VCMS_LOG(kLogDebug, "VCMS - digest cachable management IDs when not registered ");
    DxlRows services(*m_services, "service", {"managementId", "dontCacheUnlessRegistered"});
    while (services.next()) {
        if (!services.hasFirst(2)) {
            continue;
        }
        VCMS_LOG(kLogDebug, "VCMS - processing %s (value = %s)", services.text(0).c_str(),
                 services.text(1).c_str());
        if (services[1] == "true") {
            m_maps.uncachedUnlessRegistered.insert(services.text(0));
        }
    }
}

void CatalogueLoader::digestTables() {
    VCMS_LOG(kLogDebug, "VCMS - process DAS table item maps");
    const auto tables = m_master.getDocument("VcmsTableList");
    if (!tables) {
        return;
    }
    const auto mappings = m_master.getDocument("VcmsToDasMapping");
    m_maps.places.reserve(countRows(*tables, "table", "itemMap") +
                          (mappings ? DxlRows::count(*mappings) : 0));
    DxlRows rows(*tables, "table", {"dasSchemaName", "dasIndexName", "itemMap"});
    while (rows.next()) {
        if (!isComplete(rows, 3, *tables)) {
            continue;
        }
        m_maps.indexColumns.insert_or_assign(rows.text(0), rows.text(1));
        const std::string name = rows.text(2);
        if (const auto items = m_master.getDocument(name)) {
            VCMS_LOG(kLogDebug, "VCMS - digesting %s ", name.c_str());
            digestTable(rows.text(0), *items);
        }
    }
}

void CatalogueLoader::digestTable(const std::string& table, const DxlDocument& items) {
    for (DxlRows rows(items, "item", {"rootId", "dasIndexValue", "dasItemName"}); rows.next();) {
        if (isComplete(rows, 3, items)) {
            m_maps.places.addTableItem(rows[0], table, rows[2], rows[1]);
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
    DxlRows rows(*collections, "collection", {"collectionId", "collectionDataList"});
    while (rows.next()) {
        const auto members = rows.hasFirst(2) ? m_master.getDocument(rows.text(1)) : nullptr;
        if (!members) {
            continue;
        }
        VCMS_LOG(kLogDebug, "VCMS - digesting %s ", rows.text(1).c_str());
        for (DxlRows ids(*members, "rootId", {}); ids.next();) {
            if (ids.has(0)) {
                m_collections.add(rows.text(0), ids.text(0));
            }
        }
    }
    for (const std::string& name : m_collections.names()) {
        if (m_maps.items->contains(name)) {
            m_collections.addItem(name);
        }
    }
}

void CatalogueLoader::digestMappings() {
    const auto mappings = m_master.getDocument("VcmsToDasMapping");
    if (!mappings) {
        return;
    }
    DxlRows rows(*mappings, "item",
                 {"rootId", "nodeId", "dasSchemaName", "dasItemName", "default"});
    while (rows.next()) {
        if (isComplete(rows, 4, *mappings)) {
            m_maps.places.addMapping(rows[0], rows[1], rows[2], rows[3],
                                     rows.has(4) ? std::optional(rows[4]) : std::nullopt);
        }
    }
}

void CatalogueLoader::readCallFailingItems() {
    VCMS_LOG(kLogDebug,
             "VCMS - retrieving call failing VCMS items: reading from file CallFailingItems.xml");
    m_callFailing.importFromFile("CallFailingItems.xml");
    if (const auto items = m_callFailing.getDocument("CallFailingVcmsItems")) {
        for (DxlRows ids(*items, "item", {"rootId"}); ids.next();) {
            if (ids.has(0)) {
                m_maps.callFailingItems.insert(ids.text(0));
            }
        }
    }
}

}  // namespace vireo
