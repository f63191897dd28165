#include "store/StoreRows.h"

#include <utility>

namespace vireo {

StoreRows::StoreRows(const StoreCatalogue& catalogue) : m_tables(catalogue.tables().size()) {
    for (const StoreTable& table : catalogue.tables()) {
        if (!table.isIndexed()) {
            m_tables[table.position].only.resize(table.columns.size());
        }
    }
}

const StoreCell* StoreRows::find(const StoreTable& table, const StoreColumn& column,
                                 std::string_view key) const noexcept {
    const Rows& rows = m_tables[table.position];
    if (!table.isIndexed()) {
        return &rows.only[column.position];
    }
    const auto found = rows.keyed.find(key);
    return found == rows.keyed.end() ? nullptr : &found->second[column.position];
}

StoreRows::Place StoreRows::make(const StoreTable& table, const StoreColumn& column,
                                 std::string_view key) {
    Rows& rows = m_tables[table.position];
    if (!table.isIndexed()) {
        return {&rows.only[column.position], &table, &column, nullptr};
    }
    auto row = rows.keyed.find(key);
    if (row == rows.keyed.end()) {
        row = rows.keyed.emplace(key, Row(table.columns.size())).first;
    }
    return {&row->second[column.position], &table, &column, &row->first};
}

void StoreRows::reserveWrite() {
    if (m_pending.size() == m_pending.capacity()) {
        m_pending.reserve(m_pending.size() * 2 + 8);
    }
}

void StoreRows::write(const Place& place, std::string&& value) noexcept {
    StoreCell& cell = *place.cell;
    if (cell.isPending) {
        cell.value = std::move(value);
    } else {
        m_pending.push_back({place, std::move(cell)});
        cell = StoreCell{std::move(value), true, true};
    }
}

bool StoreRows::settle() noexcept {
    bool needsReboot = false;
    for (const Pending& pending : m_pending) {
        pending.cell->isPending = false;
        needsReboot |= pending.column->needsReboot && pending.cell->value != pending.before.value;
    }
    m_pending.clear();
    return needsReboot;
}

void StoreRows::undo() noexcept {
    for (Pending& pending : m_pending) {
        *pending.cell = std::move(pending.before);
    }
    m_pending.clear();
}

}  // namespace vireo
