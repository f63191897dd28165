#include "check/CatalogueLayout.h"

namespace vireo {

std::optional<std::string_view> CatalogueLayout::indexColumn(std::string_view table) const {
    const StoreTable* found = m_catalogue.findTable(table);
    return found ? std::optional<std::string_view>(found->indexColumn) : std::nullopt;
}

bool CatalogueLayout::hasColumn(std::string_view table, std::string_view column) const {
    const StoreTable* found = m_catalogue.findTable(table);
    return found != nullptr && found->findColumn(column) != nullptr;
}

std::optional<StoreLayout::Place> CatalogueLayout::place(std::size_t position) const {
    for (const StoreTable& table : m_catalogue.tables()) {
        if (position < table.columns.size()) {
            return Place{table.name, table.columns[position].name};
        }
        position -= table.columns.size();
    }
    return std::nullopt;
}

}  // namespace vireo
