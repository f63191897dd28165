#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace vireo {

/// Rows in the order in which they came, and the first one of each key by hash. `Row::key()` is a
/// text that somebody else keeps. Filled by one thread, then safe from every thread.
template <class Row>
class RowIndex {
public:
    static constexpr std::uint32_t kNone = 0xffff'ffff;

    /// Makes room for that many rows in all, so that adding them moves nothing.
    void reserve(std::size_t rows) {
        m_rows.reserve(rows);
        if (m_slots.size() < 2 * rows) {
            resize(std::bit_ceil(2 * rows));
        }
    }

    /// Appends a row. Answers the number of the first row of its key, which may be this one.
    std::uint32_t add(Row row) {
        const std::uint32_t hash = hashOf(row.key());
        Slot& slot = slotToFill(row.key(), hash);
        m_rows.push_back(std::move(row));
        if (slot.row == kNone) {
            slot = {hash, static_cast<std::uint32_t>(m_rows.size() - 1)};
        }
        return slot.row;
    }
    /// The number of the first row of the key. Appends what `make()` answers if there is none.
    template <class Make>
    std::uint32_t findOrAdd(std::string_view key, Make&& make) {
        const std::uint32_t hash = hashOf(key);
        Slot& slot = slotToFill(key, hash);
        if (slot.row == kNone) {
            m_rows.push_back(make());
            slot = {hash, static_cast<std::uint32_t>(m_rows.size() - 1)};
        }
        return slot.row;
    }

    /// The number of the first row of the key, or `kNone`.
    std::uint32_t find(std::string_view key) const {
        return m_slots.empty() ? kNone : m_slots[slotOf(key, hashOf(key))].row;
    }

    Row& operator[](std::uint32_t number) { return m_rows[number]; }
    const Row& operator[](std::uint32_t number) const { return m_rows[number]; }
    const std::vector<Row>& rows() const { return m_rows; }

private:
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t row = kNone;
    };
    static constexpr std::size_t kFewSlots = 16;

    static std::uint32_t hashOf(std::string_view text) {
        return static_cast<std::uint32_t>(std::hash<std::string_view>{}(text));
    }

    /// That of the key, or the free one where it belongs.
    std::size_t slotOf(std::string_view key, std::uint32_t hash) const {
        const std::size_t mask = m_slots.size() - 1;
        std::size_t at = hash & mask;
        while (m_slots[at].row != kNone &&
               (m_slots[at].hash != hash || m_rows[m_slots[at].row].key() != key)) {
            at = (at + 1) & mask;
        }
        return at;
    }

    /// The same, with one slot left at least behind it.
    Slot& slotToFill(std::string_view key, std::uint32_t hash) {
        if (m_slots.size() < 2 * (m_rows.size() + 1)) {
            resize(std::max(kFewSlots, 2 * m_slots.size()));
        }
        return m_slots[slotOf(key, hash)];
    }

    void resize(std::size_t count) {
        const std::vector<Slot> old = std::exchange(m_slots, std::vector<Slot>(count));
        const std::size_t mask = count - 1;
        for (const Slot& slot : old) {
            if (slot.row != kNone) {
                std::size_t at = slot.hash & mask;  // all keys differ
                while (m_slots[at].row != kNone) {
                    at = (at + 1) & mask;
                }
                m_slots[at] = slot;
            }
        }
    }

    std::vector<Row> m_rows;
    std::vector<Slot> m_slots;  // a power of two of them, half of them free at least
};

}  // namespace vireo
