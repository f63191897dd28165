#include "check/StoreMappingCheck.h"

#include "items/ItemCatalogue.h"
#include "items/OwnItemKind.h"

namespace vireo {
namespace {

constexpr const char* kTableList = "VcmsTableList";
constexpr const char* kMapping = "VcmsToDasMapping";
constexpr const char* kTableColumns[] = {"dasSchemaName", "dasIndexName", "itemMap"};
constexpr const char* kTableItemColumns[] = {"rootId", "dasIndexValue", "dasItemName"};
constexpr const char* kMappingColumns[] = {"rootId", "nodeId", "dasSchemaName", "dasItemName",
                                           "default"};

/// The index value of the node's row, as the store bridge finds it.
std::optional<std::string> indexValueOf(const NodeId& node, const StoreAddress& address,
                                        const ItemMaps& maps) {
    if (address.indexValue) {
        return address.indexValue;
    }
    const StoreAddress* whole = maps.places.find({node.rootId, node.rootId});
    return whole == nullptr ? std::nullopt : whole->indexValue;
}

}  // namespace

void StoreMappingCheck::run() {
    readTables();
    readMappings();
    if (m_store != nullptr) {
        checkPlaces();
        reportUnusedPlaces();
    }
}

void StoreMappingCheck::readTables() {
    m_rows.forEachIfThere(kTableList, {"table", kTableColumns, 3}, [this](const RowTexts& row) {
        const auto index = m_store ? m_store->indexColumn(*row[0]) : std::nullopt;
        if (index && index->empty()) {
            m_rows.of(kTableList)
                .error({"table \"", *row[0], "\" of store.xml has no index"},
                       "give it one, or map the items in VcmsToDasMapping alone");
        } else if (index && *index != *row[1]) {
            m_rows.of(kTableList)
                .error({"table \"", *row[0], "\" has the index \"", *index, "\", not \"", *row[1],
                        "\""},
                       "take the name that store.xml has");
        }
        readTable(*row[0], *row[2]);
    });
}

void StoreMappingCheck::readTable(const std::string& table, const std::string& itemList) {
    const DocumentFindings findings = m_rows.of(itemList);
    m_rows.forEach(itemList, {"item", kTableItemColumns, 3}, kTableList, [&](const RowTexts& row) {
        const std::string& tag = *row[0];
        if (!m_tableItems.insert(tag).second) {
            findings.error({"item \"", tag, "\" has a row of an indexed table already, now in \"",
                            table, "\"; the last one counts"},
                           "leave one of them");
        }
        checkItem(tag, findings);
        m_documentOf[NodeId{tag, tag}] = itemList;
    });
}

void StoreMappingCheck::readMappings() {
    const DocumentFindings findings = m_rows.of(kMapping);
    std::set<NodeId> seen;
    m_rows.forEachIfThere(kMapping, {"item", kMappingColumns, 4}, [&](const RowTexts& row) {
        const NodeId node{*row[0], *row[1]};
        if (!seen.insert(node).second) {
            findings.error({"item \"", node.rootId, "\", node \"", node.nodeId,
                            "\" is mapped twice; the last row counts"},
                           "leave one of them");
            return;
        }
        checkItem(node.rootId, findings);
        checkNode(node, findings);
        m_documentOf[node] = kMapping;
    });
}

void StoreMappingCheck::checkItem(const std::string& tag, const DocumentFindings& findings) const {
    const auto item = m_items.find(tag);
    if (item == m_items.end()) {
        findings.error({"there is no item \"", tag, "\""},
                       "correct the tag, or add the item to the item map of its owner");
    } else if (item->second.owner != kOwnManagementId) {
        findings.error({"item \"", tag, "\" belongs to ", item->second.owner,
                        ": only items of VcmsMgmtId are kept in the store"},
                       "take the row out, or give the item to VcmsMgmtId");
    } else if (const OwnItemKind kind = ownItemKind(tag);
               kind != OwnItemKind::eStored && kind != OwnItemKind::eLockDown) {
        findings.warning({"item \"", tag, "\" is never read from the store"},
                         "take the row out: the service answers this item itself");
    }
}

void StoreMappingCheck::checkNode(const NodeId& node, const DocumentFindings& findings) const {
    const auto item = m_items.find(node.rootId);
    const auto schema =
        item == m_items.end() ? nullptr : m_documents.getSchema(item->second.schema);
    if (schema && node.nodeId != node.rootId && node.nodeId != schema->getName() &&
        schema->root()->findBelow(node.nodeId) == nullptr) {
        findings.error({"item \"", node.rootId, "\" has no node \"", node.nodeId, "\""},
                       "take the item's own tag, or a node of its schema " + schema->getName());
    }
}

void StoreMappingCheck::checkPlaces() {
    for (const auto& [node, document] : m_documentOf) {
        if (const StoreAddress* address = m_maps.places.find({node.rootId, node.nodeId})) {
            checkPlace(node, *address, m_rows.of(document));
        }
    }
}

void StoreMappingCheck::checkPlace(const NodeId& node, const StoreAddress& address,
                                   const DocumentFindings& findings) {
    const std::string& tag = node.rootId;
    const auto index = m_store->indexColumn(address.table);
    if (!index) {
        findings.error({"item \"", tag, "\": the store has no table \"", address.table, "\""},
                       "correct the name, or add the table to store.xml");
        return;
    }
    if (!m_store->hasColumn(address.table, address.column)) {
        findings.error({"item \"", tag, "\": table \"", address.table, "\" has no column \"",
                        address.column, "\""},
                       "correct the name, or add the column to store.xml");
        return;
    }
    m_usedColumns.emplace(address.table, address.column);
    const auto row = indexValueOf(node, address, m_maps);
    if (!index->empty() && !row) {
        findings.error({"item \"", tag, "\": no index value for table \"", address.table, "\""},
                       "list the item among those of the table in VcmsTableList");
        return;
    }
    const std::string place = joined({address.table, "/", address.column, "/", row.value_or("")});
    if (const auto [taken, isNew] = m_nodeAt.emplace(place, node); !isNew) {
        findings.error(
            {"item \"", tag, "\" is kept in the same place as item \"", taken->second.rootId,
             "\": column \"", address.column, "\" of table \"", address.table, "\""},
            "give one of them another column or another row");
    }
}

void StoreMappingCheck::reportUnusedPlaces() const {
    for (std::size_t i = 0; const auto place = m_store->place(i); ++i) {
        if (!m_usedColumns.contains({std::string(place->table), std::string(place->column)})) {
            m_rows.of("store.xml")
                .warning({"no item is kept in column \"", place->column, "\" of table \"",
                          place->table, "\""},
                         "map an item to it, or take it out");
        }
    }
}

}  // namespace vireo
