#include "store/RowWriter.h"

#include <algorithm>
#include <functional>

#include "store/StoreSchema.h"

namespace vireo {
namespace {

/// Programs write the same few sets of items over and over.
constexpr std::size_t kMostStatements = 64;

using Pending = StoreRows::Pending;

bool isSameRow(const Pending& one, const Pending& other) {
    return one.table == other.table && one.key == other.key;
}

bool comesFirst(const Pending* one, const Pending* other) {
    if (one->table != other->table) {
        return one->table->position < other->table->position;
    }
    if (one->key != other->key) {
        return std::less<>()(one->key, other->key);  // any order will do
    }
    return one->column->position < other->column->position;
}

}  // namespace

RowWriter::RowWriter(const StoreCatalogue& catalogue) {
    for (const StoreTable& table : catalogue.tables()) {
        m_ofOneColumn.emplace_back(table.columns.size());
    }
}

RowWriter::Result RowWriter::write(SqliteConnection& connection,
                                   const std::vector<Pending>& pending) {
    m_changes.clear();
    for (const Pending& each : pending) {
        m_changes.push_back(&each);
    }
    std::sort(m_changes.begin(), m_changes.end(), comesFirst);
    std::size_t next = 0;
    while (next < m_changes.size()) {
        std::size_t end = next + 1;
        while (end < m_changes.size() && isSameRow(*m_changes[next], *m_changes[end])) {
            ++end;
        }
        const Result result = writeRow(connection, &m_changes[next], end - next);
        if (result != Result::eWritten) {
            return result;
        }
        next = end;
    }
    return Result::eWritten;
}

RowWriter::Result RowWriter::writeRow(SqliteConnection& connection, const Pending* const* first,
                                      std::size_t count) {
    SqliteStatement& statement = statementFor(connection, first, count);
    if (!statement) {
        return Result::eFailed;
    }
    bool isBound = true;
    int parameter = 0;
    for (std::size_t i = 0; i < count; ++i) {
        isBound = statement.bind(++parameter, *first[i]->cell->value) && isBound;
    }
    if (first[0]->key != nullptr) {
        isBound = statement.bind(++parameter, *first[0]->key) && isBound;
    }
    Result result = Result::eFailed;
    if (isBound && statement.step() == SqliteStatement::Step::eDone) {
        result = connection.changedRows() == 1 ? Result::eWritten : Result::eRefused;
    }
    statement.reset();
    return result;
}

SqliteStatement& RowWriter::statementFor(SqliteConnection& connection, const Pending* const* first,
                                         std::size_t count) {
    const StoreTable& table = *first[0]->table;
    SqliteStatement* statement = &m_ofOneColumn[table.position][first[0]->column->position];
    if (count > 1) {
        std::string name = std::to_string(table.position);
        for (std::size_t i = 0; i < count; ++i) {
            name.append(1, ' ').append(std::to_string(first[i]->column->position));
        }
        if (m_ofSeveral.size() >= kMostStatements && m_ofSeveral.count(name) == 0) {
            m_ofSeveral.clear();
        }
        statement = &m_ofSeveral[name];
    }
    if (!*statement) {
        std::vector<const StoreColumn*> columns;
        for (std::size_t i = 0; i < count; ++i) {
            columns.push_back(first[i]->column);
        }
        *statement = connection.prepare(StoreSchema::updateSql(table, columns));
    }
    return *statement;
}

}  // namespace vireo
