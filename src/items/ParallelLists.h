#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "data/DxlDocument.h"
#include "data/DxlResultSet.h"

namespace vireo {

/// Walks several element lists of one document in step: row i of each list belongs to entry i. The
/// walk ends as soon as any list ends.
template <std::size_t Count>
class ParallelLists {
public:
    ParallelLists(const DxlDocument& document, const std::array<const char*, Count>& paths) {
        for (std::size_t i = 0; i < Count; ++i) {
            m_lists[i] = document.select(paths[i]);
        }
    }

    /// Moves to the next row; false at the end.
    bool next() {
        for (std::size_t i = 0; i < Count; ++i) {
            if (m_lists[i]->eof()) {
                return false;
            }
        }
        for (std::size_t i = 0; i < Count; ++i) {
            bool isNull = false;
            m_lists[i]->getValue(m_values[i], isNull);
            m_present[i] = !isNull;
            m_lists[i]->next();
        }
        return true;
    }

    /// Whether the first `count` columns of the current row have values.
    bool present(std::size_t count) const {
        for (std::size_t i = 0; i < count; ++i) {
            if (!m_present[i]) {
                return false;
            }
        }
        return true;
    }
    bool has(std::size_t column) const { return m_present[column]; }
    const std::string& operator[](std::size_t column) const { return m_values[column]; }

private:
    std::array<std::unique_ptr<DxlResultSet>, Count> m_lists;
    std::array<std::string, Count> m_values;
    std::array<bool, Count> m_present{};
};

}  // namespace vireo
