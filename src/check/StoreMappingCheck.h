#pragma once

#include <set>
#include <utility>

#include "NodeId.h"
#include "check/DocumentRows.h"
#include "check/KnownItems.h"
#include "items/ItemMaps.h"

namespace vireo {

/// Checks where items are kept: that the mapped items are the service's own, and that the store has
/// a place for each, and an item for each place.
class StoreMappingCheck {
public:
    /// Not owned; all outlive this. `store` may be null.
    StoreMappingCheck(const DxlCollection& documents, const ItemMaps& maps, const KnownItems& items,
                      const StoreLayout* store, const DocumentRows& rows)
        : m_documents(documents), m_maps(maps), m_items(items), m_store(store), m_rows(rows) {}

    void run();

private:
    void readTables();
    void readTable(const std::string& table, const std::string& itemList);
    void readMappings();
    void checkItem(const std::string& tag, const DocumentFindings& findings) const;
    void checkNode(const NodeId& node, const DocumentFindings& findings) const;
    void checkPlaces();
    void checkPlace(const NodeId& node, const StoreAddress& address,
                    const DocumentFindings& findings);
    void reportUnusedPlaces() const;

    const DxlCollection& m_documents;
    const ItemMaps& m_maps;
    const KnownItems& m_items;
    const StoreLayout* m_store;
    const DocumentRows& m_rows;
    std::set<std::string> m_tableItems;  ///< those with a row of an indexed table
    std::map<NodeId, std::string> m_documentOf;
    std::map<std::string, NodeId> m_nodeAt;  ///< by table, column and index value
    std::set<std::pair<std::string, std::string>> m_usedColumns;
};

}  // namespace vireo
