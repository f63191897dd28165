#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "items/RowIndex.h"
#include "items/TextArena.h"

namespace vireo {

/// A node to be looked up, without a copy of its names.
struct NodeName {
    std::string_view rootId;
    std::string_view nodeId;
};

/// Where the persistent store keeps a node.
struct StoreAddress {
    std::string table;
    std::string column;
    std::optional<std::string> indexValue;    ///< of a table-kept item
    std::optional<std::string> defaultValue;  ///< used when the store has no value
};

/// The nodes that the store keeps of each item, and where. Filled by one thread; safe from every
/// thread after `finish`. What it says of an item is made when somebody first asks for it: most
/// items are not asked for for a long time after the start.
class StorePlaces {
public:
    /// Makes room for that many rows in all.
    void reserve(std::size_t rows) { m_rows.reserve(rows); }
    /// The item is kept in a row of a table. The last such row of an item counts.
    void addTableItem(std::string_view rootId, std::string_view table, std::string_view column,
                      std::string_view indexValue);
    /// The node is kept in a column. The last row of a node counts, also instead of a table's.
    void addMapping(std::string_view rootId, std::string_view nodeId, std::string_view table,
                    std::string_view column, const std::optional<std::string_view>& defaultValue);
    /// After the last row.
    void finish();

    /// The mapped nodes in mapping order, or the item itself when a table alone keeps it. Empty
    /// when the item is not stored.
    const std::vector<std::string>& nodes(std::string_view rootId) const;
    /// Null when the node is not stored.
    const StoreAddress* find(const NodeName& node) const;

private:
    struct Row;
    static constexpr std::uint32_t kNoRow = RowIndex<Row>::kNone;

    struct Row {
        std::string_view rootId;
        std::string_view nodeId;      ///< null when a table keeps the item
        std::string_view value;       ///< the index value, or the default, null when there is none
        std::uint32_t table;          ///< number in `m_names`
        std::uint32_t column;         ///< likewise
        std::uint32_t next = kNoRow;  ///< of the same item
        std::uint32_t last = kNoRow;  ///< of the same item; in its first row

        std::string_view key() const { return rootId; }
    };
    struct Name {
        std::string text;

        std::string_view key() const { return text; }
    };
    struct Item {
        std::vector<std::string> nodes;
        std::map<std::string, StoreAddress, std::less<>> addresses;  ///< by node
    };

    void add(Row row, std::string_view table, std::string_view column);
    std::uint32_t numberOf(std::string_view name);
    const Item* item(std::string_view rootId) const;
    Item make(std::uint32_t firstRow) const;

    TextArena m_texts;
    RowIndex<Row> m_rows;
    RowIndex<Name> m_names;

    mutable std::mutex m_making;
    mutable std::deque<Item> m_items;
    std::unique_ptr<std::atomic<const Item*>[]> m_made;  ///< by the number of the first row
};

}  // namespace vireo
