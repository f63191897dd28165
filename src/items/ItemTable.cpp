#include "items/ItemTable.h"

#include <memory>

namespace vireo {

void ItemTable::add(std::string_view tag, std::string_view managementId, std::string_view schema) {
    const Item last = m_items.rows().empty() ? Item{{}, 0, 0} : m_items.rows().back();
    const std::string_view kept = m_tags.keep(tag);
    m_items.add({kept, numberOf(m_owners, last.owner, managementId, kept),
                 numberOf(m_schemas, last.schema, schema, kept)});
}

/// `likely` is the answer of the last time: many rows on end have the same.
std::uint32_t ItemTable::numberOf(RowIndex<Name>& names, std::uint32_t likely,
                                  std::string_view name, std::string_view tag) {
    if (likely < names.rows().size() && names[likely].text == name) {
        return likely;
    }
    return names.findOrAdd(name, [&] { return Name{std::string(name), tag}; });
}

const std::string* ItemTable::managementId(std::string_view tag) const {
    const std::uint32_t item = m_items.find(tag);
    return item == RowIndex<Item>::kNone ? nullptr : &m_owners[m_items[item].owner].text;
}

const std::string* ItemTable::schema(std::string_view tag) const {
    const std::uint32_t item = m_items.find(tag);
    return item == RowIndex<Item>::kNone ? nullptr : &m_schemas[m_items[item].schema].text;
}

DxlNode::Pointer ItemTable::makeRoot() const {
    auto root = std::make_shared<DxlNode>(getName(), DxlNode::Kind::eBranch);
    for (const Item& item : m_items.rows()) {
        auto branch = std::make_shared<DxlNode>(std::string(item.tag), DxlNode::Kind::eBranch);
        branch->append(std::make_shared<DxlNode>("managementId", DxlNode::Kind::eLeaf,
                                                 m_owners[item.owner].text));
        branch->append(
            std::make_shared<DxlNode>("schema", DxlNode::Kind::eLeaf, m_schemas[item.schema].text));
        root->append(std::move(branch));
    }
    return root;
}

}  // namespace vireo
