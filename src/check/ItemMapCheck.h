#pragma once

#include "check/DocumentRows.h"
#include "check/KnownItems.h"
#include "items/ItemMaps.h"

namespace vireo {

/// Checks who owns what, and that every item has a schema and a tag that means what it looks like.
class ItemMapCheck {
public:
    /// Not owned; all outlive this. `maps` is what the loader made of the documents.
    ItemMapCheck(const DxlCollection& documents, const ItemMaps& maps, const DocumentRows& rows)
        : m_documents(documents), m_maps(maps), m_rows(rows) {}

    /// Reports, and answers the items that the service knows.
    KnownItems run();

private:
    void readService(const DxlNode& service);
    void readItemMap(const std::string& owner, const std::string& itemMap);
    void checkSchema(const std::string& tag, const KnownItem& item) const;
    void checkMeaning(const std::string& tag, const KnownItem& item) const;

    const DxlCollection& m_documents;
    const ItemMaps& m_maps;
    const DocumentRows& m_rows;
    KnownItems m_items;
};

}  // namespace vireo
