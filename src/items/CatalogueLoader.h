#pragma once

#include <string>

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
    void digestItemMap(DxlSchema& itemMapSchema, const std::string& managementId,
                       const DxlDocument& itemMap);
    void noteUncachedServices();
    void warnOfUnknownSchemas() const;
    void digestTables();
    void digestTable(const std::string& table, const DxlDocument& items);
    void loadDataCollections();
    void digestMappings();
    void listTableKeptItems();
    void readCallFailingItems();

    DxlCollection& m_master;
    DxlCollection& m_callFailing;
    DataCollection& m_collections;
    ItemMaps& m_maps;
    DxlDocumentPointer m_services;
};

}  // namespace vireo
