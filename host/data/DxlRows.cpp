#include "data/DxlRows.h"

#include <algorithm>

#include "data/DxlResultSet.h"
#include "data/RowTable.h"

namespace vireo {
namespace {

const RowTable* tableOf(const DxlDocument& document) {
    return dynamic_cast<const RowTable*>(document.source().get());
}

}  // namespace

class DxlRows::Walk {
public:
    virtual ~Walk() = default;
    virtual bool next(std::vector<std::string_view>& values) = 0;
};

/// Along the text of a table. Rows of other names are passed over.
class DxlRows::TableWalk : public Walk {
public:
    TableWalk(const RowTable& table, std::string_view row,
              std::initializer_list<std::string_view> columns)
        : m_xml(table.rows()), m_name(row), m_hasReferences(table.hasReferences()) {
        for (const std::string_view column : columns) {
            m_columns.push_back({std::string(column), kNowhere});
        }
    }

    bool next(std::vector<std::string_view>& values) override {
        do {
            if (!m_xml.takeNextRow(m_row)) {
                return false;
            }
            if (!m_row.isAlike) {
                m_isWanted = m_row.name == m_name;
                findColumns();
            }
        } while (!m_isWanted);
        if (m_columns.empty()) {
            values[0] = m_row.text;
        }
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            const std::size_t place = m_columns[i].place;
            values[i] = place == kNowhere ? std::string_view() : m_row.cells[place].text;
        }
        if (m_hasReferences) {
            decode(values);
        }
        return true;
    }

private:
    static constexpr std::size_t kNowhere = PlainRow::kMostCells;

    struct Column {
        std::string name;
        std::size_t place;  ///< among the row's cells
    };

    void findColumns() {
        for (Column& column : m_columns) {
            column.place = 0;
            while (column.place < m_row.count && m_row.cells[column.place].name != column.name) {
                ++column.place;
            }
            if (column.place == m_row.count) {
                column.place = kNowhere;
            }
        }
    }

    void decode(std::vector<std::string_view>& values) {
        m_decoded.resize(values.size());
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (values[i].find('&') != std::string_view::npos) {
                RowTable::decode(values[i], m_decoded[i]);
                values[i] = m_decoded[i];
            }
        }
    }

    PlainXml m_xml;
    const std::string m_name;
    const bool m_hasReferences;
    std::vector<Column> m_columns;
    PlainRow m_row;
    bool m_isWanted = false;
    std::vector<std::string> m_decoded;
};

/// Along the lists of a tree.
class DxlRows::ListWalk : public Walk {
public:
    ListWalk(const DxlDocument& document, std::string_view row,
             std::initializer_list<std::string_view> columns) {
        const std::string path = "/" + std::string(row);
        for (const std::string_view column : columns) {
            m_lists.push_back(document.select(path + "/" + std::string(column)));
        }
        if (m_lists.empty()) {
            m_lists.push_back(document.select(path));
            m_hasRows = document.root()->child(row) != nullptr;
        }
        m_texts.resize(m_lists.size());
    }

    bool next(std::vector<std::string_view>& values) override {
        const auto isAtEnd = [](const auto& list) { return list->eof(); };
        if (!m_hasRows || std::any_of(m_lists.begin(), m_lists.end(), isAtEnd)) {
            return false;
        }
        for (std::size_t i = 0; i < m_lists.size(); ++i) {
            bool isNull = false;
            m_lists[i]->getValue(m_texts[i], isNull);
            m_lists[i]->next();
            values[i] = isNull ? std::string_view() : std::string_view(m_texts[i]);
        }
        return true;
    }

private:
    std::vector<std::unique_ptr<DxlResultSet>> m_lists;
    std::vector<std::string> m_texts;
    bool m_hasRows = true;  // a selection of no row at all has one that is null
};

DxlRows::DxlRows(const DxlDocument& document, std::string_view row,
                 std::initializer_list<std::string_view> columns)
    : m_values(std::max<std::size_t>(1, columns.size())) {
    const RowTable* table = tableOf(document);
    if (table != nullptr && (columns.size() > 0 || !table->hasCells())) {
        m_walk = std::make_unique<TableWalk>(*table, row, columns);
    } else {
        m_walk = std::make_unique<ListWalk>(document, row, columns);
    }
}

DxlRows::~DxlRows() = default;

bool DxlRows::next() {
    return m_walk->next(m_values);
}

std::size_t DxlRows::count(const DxlDocument& document) {
    const RowTable* table = tableOf(document);
    return table != nullptr ? table->count() : document.root()->children().size();
}

}  // namespace vireo
