#include "items/ItemCatalogue.h"

#include "data/ManageableData.h"
#include "items/CatalogueLoader.h"
#include "items/ParallelLists.h"

namespace vireo {
namespace {

const std::string& nothing() {
    static const std::string empty;
    return empty;
}

}  // namespace

ItemCatalogue::ItemCatalogue() : m_master("vcms"), m_callFailing("vcms") {}

bool ItemCatalogue::load(DataCollection& collections) {
    return CatalogueLoader(m_master, m_callFailing, collections, m_maps).load();
}

const std::string& ItemCatalogue::findManagementId(const std::string& tag) const {
    const DxlNode* item =
        m_maps.masterItemMap && !tag.empty() ? m_maps.masterItemMap->root()->child(tag) : nullptr;
    const DxlNode* owner = item ? item->child("managementId") : nullptr;
    return owner ? owner->text() : nothing();
}

std::string ItemCatalogue::findSchemaName(const std::string& tag) const {
    const DxlDocumentPointer cached = m_master.getDocument(tag);
    return cached ? cached->schemaName() : configuredSchemaName(tag);
}

const std::string& ItemCatalogue::configuredSchemaName(const std::string& tag) const {
    const DxlNode* item = m_maps.masterItemMap ? m_maps.masterItemMap->root()->child(tag) : nullptr;
    const DxlNode* schema = item ? item->child("schema") : nullptr;
    return schema ? schema->text() : nothing();
}

std::vector<std::string> ItemCatalogue::itemsOf(const std::string& managementId) const {
    std::vector<std::string> rootIds;
    const DxlDocumentPointer list = m_master.getDocument("vcmsServiceList");
    if (!list) {
        return rootIds;
    }
    ParallelLists<2> services(*list, {"/service/managementId", "/service/itemMap"});
    while (services.next()) {
        const bool isOwner = services.present(2) && services[0] == managementId;
        const DxlDocumentPointer itemMap = isOwner ? m_master.getDocument(services[1]) : nullptr;
        if (!itemMap) {
            continue;
        }
        for (ParallelLists<1> items(*itemMap, {"/item/rootId"}); items.next();) {
            if (items.has(0) && !findManagementId(items[0]).empty()) {
                rootIds.push_back(items[0]);
            }
        }
    }
    return rootIds;
}

bool ItemCatalogue::isUncachedUnlessRegistered(const std::string& managementId) const {
    return m_maps.uncachedUnlessRegistered.contains(managementId);
}

bool ItemCatalogue::isNeverCached(const std::string& tag) const {
    return m_maps.neverCachedTags.contains(tag);
}

bool ItemCatalogue::isCacheable(const std::string& tag) const {
    const std::string& owner = findManagementId(tag);
    return !owner.empty() && owner != kOwnManagementId && !isNeverCached(tag);
}

bool ItemCatalogue::isCallFailingItem(const std::string& rootId) const {
    return m_maps.callFailingItems.contains(rootId);
}

const std::vector<std::string>& ItemCatalogue::storedNodes(const std::string& rootId) const {
    static const std::vector<std::string> none;
    const auto found = m_maps.storedNodes.find(rootId);
    return found == m_maps.storedNodes.end() ? none : found->second;
}

const StoreAddress* ItemCatalogue::storeAddress(const NodeName& node) const {
    const auto found = m_maps.storeAddresses.find(node);
    return found == m_maps.storeAddresses.end() ? nullptr : &found->second;
}

const std::string& ItemCatalogue::indexColumn(const std::string& table) const {
    const auto found = m_maps.indexColumns.find(table);
    return found == m_maps.indexColumns.end() ? nothing() : found->second;
}

DxlDocumentPointer ItemCatalogue::cachedOrDefault(const std::string& rootId,
                                                  const std::string& schemaName) {
    return m_master.makeDocument(schemaName, rootId);
}

void ItemCatalogue::keepItem(const ManageableData& record, const std::string& rootId) {
    const DxlDocumentPointer document = record.getDocument(rootId);
    if (document) {
        m_master.putDocument(document);
    }
}

}  // namespace vireo
