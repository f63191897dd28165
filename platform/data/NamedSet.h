#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vireo {

/// Shared values by the names that they have. A record holds one or two, a master collection
/// thousands: few are looked along, many are found by hash. Not synchronised.
template <class Value>
class NamedSet {
public:
    using Pointer = std::shared_ptr<const Value>;

    /// The value of that name, or null.
    Pointer find(std::string_view name) const {
        const std::size_t position = positionOf(name);
        return position < m_values.size() ? m_values[position] : nullptr;
    }
    /// False, and nothing changes, when there is one of the name.
    bool insert(Pointer value) {
        if (positionOf(value->getName()) < m_values.size()) {
            return false;
        }
        append(std::move(value));
        return true;
    }
    /// Replaces one of the same name.
    void put(Pointer value) {
        const std::size_t position = positionOf(value->getName());
        if (position == m_values.size()) {
            append(std::move(value));
            return;
        }
        if (!m_index.empty()) {  // the index refers to the names inside the values
            auto entry = m_index.extract(value->getName());
            entry.key() = value->getName();
            m_index.insert(std::move(entry));
        }
        m_values[position] = std::move(value);
    }
    /// False when there was none.
    bool erase(std::string_view name) {
        const std::size_t position = positionOf(name);
        if (position == m_values.size()) {
            return false;
        }
        if (!m_index.empty()) {
            m_index.erase(name);
        }
        if (position + 1 < m_values.size()) {
            std::swap(m_values[position], m_values.back());
            if (!m_index.empty()) {
                m_index[m_values[position]->getName()] = position;
            }
        }
        m_values.pop_back();
        return true;
    }
    void clear() {
        m_values.clear();
        m_index.clear();
    }
    void swap(NamedSet& other) noexcept {
        m_values.swap(other.m_values);
        m_index.swap(other.m_index);
    }

    /// In no order.
    const std::vector<Pointer>& values() const { return m_values; }
    /// All, ordered by name.
    std::vector<Pointer> sorted() const {
        std::vector<Pointer> all(m_values);
        std::sort(all.begin(), all.end(),
                  [](const Pointer& a, const Pointer& b) { return a->getName() < b->getName(); });
        return all;
    }
    /// Calls `visit` with each, ordered by name.
    template <class Visit>
    void forEachSorted(Visit&& visit) const {
        if (m_values.size() == 1) {  // as in most records: nothing to copy
            visit(m_values.front());
            return;
        }
        for (const Pointer& value : sorted()) {
            visit(value);
        }
    }

private:
    using Index = std::unordered_map<std::string_view, std::size_t>;

    // Up to here looking along the values is faster than hashing.
    static constexpr std::size_t kFew = 8;

    /// The number of values when there is none of the name.
    std::size_t positionOf(std::string_view name) const {
        if (!m_index.empty()) {
            const auto found = m_index.find(name);
            return found == m_index.end() ? m_values.size() : found->second;
        }
        std::size_t position = 0;
        while (position < m_values.size() && m_values[position]->getName() != name) {
            ++position;
        }
        return position;
    }

    // Whatever needs memory comes first: without it nothing has changed.
    void append(Pointer value) {
        if (m_values.size() == m_values.capacity()) {
            m_values.reserve(2 * m_values.size() + 1);
        }
        if (m_index.empty() && m_values.size() >= kFew) {
            Index index;
            for (std::size_t i = 0; i < m_values.size(); ++i) {
                index.emplace(m_values[i]->getName(), i);
            }
            m_index.swap(index);
        }
        if (!m_index.empty()) {
            m_index.emplace(value->getName(), m_values.size());
        }
        m_values.push_back(std::move(value));
    }

    std::vector<Pointer> m_values;
    Index m_index;  // empty while they are few
};

}  // namespace vireo
