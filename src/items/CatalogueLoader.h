#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>

#include "data/DxlCollection.h"
#include "items/ItemMaps.h"

namespace vireo {

class DataCollection;

/// Imports the configuration documents and turns them into the item maps. Used once, on the
/// start-up thread.
class CatalogueLoader {
public:
    CatalogueLoader(DxlCollection& master, DxlCollection& callFailing, DataCollection& collections,
                    ItemMaps& maps);

    /// False when the list of services is missing; nothing else is read then.
    bool load();

private:
    bool importDocuments();
    void digestItemMaps();
    void digestItemMap(const std::string& managementId, const DxlDocument& itemMap);
    bool isFreeName(std::string_view tag, const DxlDocument& itemMap) const;
    /// How many rows the documents have that the column of `list` names.
    std::size_t countRows(const DxlDocument& list, std::string_view row,
                          std::string_view column) const;
    void noteUncachedServices();
    void warnOfUnknownSchemas() const;
    void digestTables();
    void digestTable(const std::string& table, const DxlDocument& items);
    void loadDataCollections();
    void digestMappings();
    void readCallFailingItems();

    DxlCollection& m_master;
    DxlCollection& m_callFailing;
    DataCollection& m_collections;
    ItemMaps& m_maps;
    DxlDocumentPointer m_services;
    std::unordered_set<std::string_view> m_documentNames;  ///< which no item may have
};

}  // namespace vireo
