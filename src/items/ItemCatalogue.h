#pragma once

#include <string>
#include <vector>

#include "data/DxlCollection.h"
#include "items/ItemMaps.h"

namespace vireo {

class DataCollection;
class ManageableData;

/// The management id of the items that this service owns itself.
inline constexpr const char* kOwnManagementId = "VcmsMgmtId";

/// Knows every configured item: its owner, its schema, how it is stored. Also holds the master
/// collection, in which configuration documents and cached item documents live. Loaded once on the
/// start-up thread; safe from every thread afterwards.
class ItemCatalogue {
public:
    ItemCatalogue();

    /// Reads the configuration. False when there is no list of services; nothing is known then.
    bool load(DataCollection& collections);

    DxlCollection& master() { return m_master; }
    const DxlCollection& master() const { return m_master; }

    /// Empty when the tag is unknown.
    const std::string& findManagementId(const std::string& tag) const;
    /// Of the cached document, where there is one, else as configured. Empty when unknown.
    std::string findSchemaName(const std::string& tag) const;
    const std::string& configuredSchemaName(const std::string& tag) const;

    /// The items that the configuration gives to the owner, by every list that names it.
    std::vector<std::string> itemsOf(const std::string& managementId) const;

    bool isUncachedUnlessRegistered(const std::string& managementId) const;
    bool isNeverCached(const std::string& tag) const;
    /// Whether simple reads of the item may be answered from the value cache: a known item of
    /// another owner that is not excluded.
    bool isCacheable(const std::string& tag) const;
    bool isCallFailingItem(const std::string& rootId) const;

    /// The nodes that the store keeps for an item: those mapped, or the item itself when it is kept
    /// in a table. Empty when it is not stored.
    const std::vector<std::string>& storedNodes(const std::string& rootId) const;
    /// Null when the node is not stored.
    const StoreAddress* storeAddress(const NodeName& node) const;
    /// Empty for a table without index.
    const std::string& indexColumn(const std::string& table) const;

    /// The item's document in the master collection, made from its schema when there is none. Null
    /// without a schema.
    DxlDocumentPointer cachedOrDefault(const std::string& rootId, const std::string& schemaName);

    /// Keeps the item's document of `record` in the master collection.
    void keepItem(const ManageableData& record, const std::string& rootId);

private:
    DxlCollection m_master;
    DxlCollection m_callFailing;
    ItemMaps m_maps;
};

}  // namespace vireo
