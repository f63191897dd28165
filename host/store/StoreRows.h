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
    explicit StoreRows(const StoreCatalogue& catalogue);

    /// The cell, or null when the table has no row of that key.
    const StoreCell* find(const StoreTable& table, const StoreColumn& column,
                          std::string_view key) const noexcept;
    /// The cell; makes the row if absent. A row without values reads like no row.
    StoreCell& make(const StoreTable& table, const StoreColumn& column, std::string_view key);

    /// Makes sure that the next `write` needs no memory.
    void reserveWrite();
    /// Gives the cell a value that is pending until `settle` or `undo`.
    void write(StoreCell& cell, const StoreColumn& column, std::string&& value) noexcept;
    /// How many cells are pending.
    std::size_t pendingCount() const noexcept { return m_pending.size(); }

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
    struct Pending {
        StoreCell* cell = nullptr;
        StoreCell before;
        bool needsReboot = false;
    };

    std::vector<Rows> m_tables;  ///< by position
    std::vector<Pending> m_pending;
};

}  // namespace vireo
