#include "items/ItemCatalogue.h"

#include "data/DxlRows.h"
#include "data/ManageableData.h"
#include "items/CatalogueLoader.h"

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
    const std::string* owner = m_maps.items->managementId(tag);
    return owner ? *owner : nothing();
}

std::string ItemCatalogue::findSchemaName(const std::string& tag) const {
    const DxlDocumentPointer cached = m_master.getDocument(tag);
    return cached ? cached->schemaName() : configuredSchemaName(tag);
}

const std::string& ItemCatalogue::configuredSchemaName(const std::string& tag) const {
    const std::string* schema = m_maps.items->schema(tag);
    return schema ? *schema : nothing();
}

std::vector<std::string> ItemCatalogue::itemsOf(const std::string& managementId) const {
    std::vector<std::string> rootIds;
    const DxlDocumentPointer list = m_master.getDocument("vcmsServiceList");
    if (!list) {
        return rootIds;
    }
    for (DxlRows services(*list, "service", {"managementId", "itemMap"}); services.next();) {
        const bool isOwner = services.hasFirst(2) && services[0] == managementId;
        const DxlDocumentPointer itemMap =
            isOwner ? m_master.getDocument(services.text(1)) : nullptr;
        if (!itemMap) {
            continue;
        }
        for (DxlRows items(*itemMap, "item", {"rootId"}); items.next();) {
            const std::string* owner =
                items.has(0) ? m_maps.items->managementId(items[0]) : nullptr;
            if (owner != nullptr && !owner->empty()) {
                rootIds.push_back(items.text(0));
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
    return m_maps.places.nodes(rootId);
}

const StoreAddress* ItemCatalogue::storeAddress(const NodeName& node) const {
    return m_maps.places.find(node);
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
