#pragma once

#include "service/ConfigurationCheck.h"
#include "store/StoreCatalogue.h"

namespace vireo {

/// The store's catalogue as checks of the configuration see it.
class CatalogueLayout : public StoreLayout {
public:
    /// Not owned; outlives this.
    explicit CatalogueLayout(const StoreCatalogue& catalogue) : m_catalogue(catalogue) {}

    std::optional<std::string_view> indexColumn(std::string_view table) const override;
    bool hasColumn(std::string_view table, std::string_view column) const override;
    std::optional<Place> place(std::size_t position) const override;

private:
    const StoreCatalogue& m_catalogue;
};

}  // namespace vireo
