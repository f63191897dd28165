#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Visibility.h"
#include "data/DxlDocument.h"

namespace vireo {

/// Walks a document that is a list of rows, such as
/// `<item><rootId>melody</rootId><schema>text</schema></item>`, without a tree where it has none
/// yet. Column i of a row is what `DxlDocument::select` has for it at "/row/column", and the walk
/// ends as soon as one of these lists does. Used by one thread at a time.
class VIREO_API DxlRows {
public:
    /// The elements `row`, and in each the elements `columns`. Without columns there is one, the
    /// text of the row itself. `document` must outlive this.
    DxlRows(const DxlDocument& document, std::string_view row,
            std::initializer_list<std::string_view> columns);
    ~DxlRows();
    DxlRows(const DxlRows&) = delete;
    DxlRows& operator=(const DxlRows&) = delete;

    /// Moves to the next row, the first one at first; false at the end.
    bool next();

    /// Whether the current row has the element.
    bool has(std::size_t column) const { return m_values[column].data() != nullptr; }
    /// Whether it has the first `count` ones.
    bool hasFirst(std::size_t count) const {
        return std::all_of(m_values.begin(), m_values.begin() + static_cast<std::ptrdiff_t>(count),
                           [](std::string_view value) { return value.data() != nullptr; });
    }
    /// The element's value, empty where there is none. Good until the next row.
    std::string_view operator[](std::size_t column) const { return m_values[column]; }
    /// A copy of it.
    std::string text(std::size_t column) const { return std::string(m_values[column]); }

    /// How many elements stand at the top of the document.
    static std::size_t count(const DxlDocument& document);

private:
    class Walk;
    class TableWalk;
    class ListWalk;

    std::vector<std::string_view> m_values;
    std::unique_ptr<Walk> m_walk;
};

}  // namespace vireo
