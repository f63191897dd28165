#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "data/DxlTree.h"
#include "items/RowIndex.h"
#include "items/TextArena.h"

namespace vireo {

/// The name of the service's own map of items, a schema and a document in the master collection.
inline constexpr const char* kMasterItemMap = "masterItemMap";

/// Every configured item with its owner and its schema; the first row of a tag counts. As a tree it
/// is the master item map, a branch for each row. Filled by one thread, then safe from every
/// thread.
class ItemTable : public DxlTreeSource {
public:
    ItemTable() : DxlTreeSource(kMasterItemMap) {}

    /// Makes room for that many rows in all.
    void reserve(std::size_t rows) { m_items.reserve(rows); }
    void add(std::string_view tag, std::string_view managementId, std::string_view schema);

    bool contains(std::string_view tag) const { return m_items.find(tag) != RowIndex<Item>::kNone; }
    /// Null when the tag is unknown.
    const std::string* managementId(std::string_view tag) const;
    const std::string* schema(std::string_view tag) const;

    /// Calls `visit(schema, tag)` for each schema that a row names, with the first such row.
    template <class Visit>
    void forEachSchema(Visit&& visit) const {
        for (const Name& schema : m_schemas.rows()) {
            visit(schema.text, schema.firstTag);
        }
    }

protected:
    DxlNode::Pointer makeRoot() const override;

private:
    struct Item {
        std::string_view tag;
        std::uint32_t owner;
        std::uint32_t schema;

        std::string_view key() const { return tag; }
    };
    /// An owner or a schema; the items have its number.
    struct Name {
        std::string text;
        std::string_view firstTag;

        std::string_view key() const { return text; }
    };

    static std::uint32_t numberOf(RowIndex<Name>& names, std::uint32_t likely,
                                  std::string_view name, std::string_view tag);

    TextArena m_tags;
    RowIndex<Item> m_items;
    RowIndex<Name> m_owners;
    RowIndex<Name> m_schemas;
};

}  // namespace vireo
