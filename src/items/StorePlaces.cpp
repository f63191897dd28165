#include "items/StorePlaces.h"

#include <utility>

namespace vireo {

void StorePlaces::addTableItem(std::string_view rootId, std::string_view table,
                               std::string_view column, std::string_view indexValue) {
    Row row{};
    row.rootId = m_texts.keep(rootId);
    row.value = m_texts.keep(indexValue);
    add(row, table, column);
}

void StorePlaces::addMapping(std::string_view rootId, std::string_view nodeId,
                             std::string_view table, std::string_view column,
                             const std::optional<std::string_view>& defaultValue) {
    Row row{};
    row.rootId = m_texts.keep(rootId);
    row.nodeId = nodeId == rootId ? row.rootId : m_texts.keep(nodeId);
    if (defaultValue) {
        row.value = m_texts.keep(*defaultValue);
    }
    add(row, table, column);
}

void StorePlaces::add(Row row, std::string_view table, std::string_view column) {
    row.table = numberOf(table);
    row.column = numberOf(column);
    const auto number = static_cast<std::uint32_t>(m_rows.rows().size());
    Row& first = m_rows[m_rows.add(row)];
    if (first.last != kNoRow) {
        m_rows[first.last].next = number;
    }
    first.last = number;
}

std::uint32_t StorePlaces::numberOf(std::string_view name) {
    return m_names.findOrAdd(name, [name] { return Name{std::string(name)}; });
}

void StorePlaces::finish() {
    m_made = std::make_unique<std::atomic<const Item*>[]>(m_rows.rows().size());
}

const std::vector<std::string>& StorePlaces::nodes(std::string_view rootId) const {
    static const std::vector<std::string> none;
    const Item* found = item(rootId);
    return found != nullptr ? found->nodes : none;
}

const StoreAddress* StorePlaces::find(const NodeName& node) const {
    const Item* found = item(node.rootId);
    if (found == nullptr) {
        return nullptr;
    }
    const auto address = found->addresses.find(node.nodeId);
    return address == found->addresses.end() ? nullptr : &address->second;
}

const StorePlaces::Item* StorePlaces::item(std::string_view rootId) const {
    const std::uint32_t first = m_rows.find(rootId);
    if (first == kNoRow) {
        return nullptr;
    }
    if (const Item* made = m_made[first].load(std::memory_order_acquire)) {
        return made;
    }
    const std::lock_guard lock(m_making);
    if (const Item* made = m_made[first].load(std::memory_order_relaxed)) {
        return made;  // another thread was first
    }
    const Item& item = m_items.emplace_back(make(first));
    m_made[first].store(&item, std::memory_order_release);
    return &item;
}

StorePlaces::Item StorePlaces::make(std::uint32_t firstRow) const {
    Item item;
    const std::string rootId(m_rows[firstRow].rootId);
    bool isRootListed = false;
    for (std::uint32_t i = firstRow; i != kNoRow; i = m_rows[i].next) {
        const Row& row = m_rows[i];
        const bool isMapping = row.nodeId.data() != nullptr;
        // Deliberate: a table-kept item is keyed with its root id in both fields.
        const std::string node = isMapping ? std::string(row.nodeId) : rootId;
        const auto [entry, isNew] = item.addresses.try_emplace(node);
        StoreAddress& address = entry->second;
        address.table = m_names[row.table].text;
        address.column = m_names[row.column].text;
        if (!isMapping) {
            address.indexValue = row.value;
            continue;
        }
        if (row.value.data() != nullptr) {
            address.defaultValue = row.value;
        }
        // A row that comes again, or maps a node that a table keeps, replaces the address; the node
        // is listed once.
        if (isNew || (node == rootId && !isRootListed)) {
            item.nodes.push_back(node);
        }
        isRootListed = isRootListed || node == rootId;
    }
    if (item.nodes.empty()) {
        item.nodes.push_back(rootId);  // without mapped nodes there is just the one of the table
    }
    return item;
}

}  // namespace vireo
