#include "items/ItemCatalogue.h"

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

const StoreAddress* ItemCatalogue::storeAddress(const NodeId& node) const {
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
