#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/StoreCatalogue.h"

namespace vireo {

/// One value of the store as it is kept in memory.
struct StoreCell {
    std::optional<std::string> value;  ///< nothing: the store has no value
    bool isPending = false;            ///< written, but not yet on stable storage
    bool isReadable = true;            ///< whether an answer can carry the value

    bool holds(std::string_view text) const noexcept { return value && *value == text; }
};

/// All values of the store, so that a read needs no SQL, and what is needed to take back the ones
/// that are not yet on stable storage. Not synchronised; cells keep their address.
class StoreRows {
public:
    /// Where a cell is.
    struct Place {
        StoreCell* cell = nullptr;
        const StoreTable* table = nullptr;
        const StoreColumn* column = nullptr;
        const std::string* key = nullptr;  ///< of the row; null when the table has no index
    };
    struct Pending : Place {
        StoreCell before;
    };

    explicit StoreRows(const StoreCatalogue& catalogue);

    /// The cell, or null when the table has no row of that key.
    const StoreCell* find(const StoreTable& table, const StoreColumn& column,
                          std::string_view key) const noexcept;
    /// The place of the cell; makes the row if absent. A row without values reads like no row.
    Place make(const StoreTable& table, const StoreColumn& column, std::string_view key);

    /// Makes sure that the next `write` needs no memory.
    void reserveWrite();
    /// Gives the cell a value that is pending until `settle` or `undo`.
    void write(const Place& place, std::string&& value) noexcept;
    /// The cells that are pending, each once.
    const std::vector<Pending>& pending() const noexcept { return m_pending; }

    /// All pending values stay. Answers whether one of them needs a reboot.
    bool settle() noexcept;
    /// All pending cells get back the values that they had before.
    void undo() noexcept;

private:
    using Row = std::vector<StoreCell>;
    struct Rows {
        Row only;                 ///< of a table without index
        StoreNameMap<Row> keyed;  ///< of a table with one
    };
    std::vector<Rows> m_tables;  ///< by position
    std::vector<Pending> m_pending;
};

}  // namespace vireo
