#pragma once

#include <string>
#include <vector>

#include "store/SqliteConnection.h"
#include "store/StoreCatalogue.h"
#include "store/StoreRows.h"

namespace vireo {

/// Keeps the tables of a database file in step with a catalogue. A table with an index has it as
/// primary key; one without has exactly one row. All columns are texts. What the file has beyond
/// the catalogue is left alone.
///
/// The names in the SQL come from the catalogue, whose names need no more than quotes.
class StoreSchema {
public:
    StoreSchema(SqliteConnection& connection, const StoreCatalogue& catalogue) noexcept
        : m_connection(connection), m_catalogue(catalogue) {}

    /// Makes what is absent, in one transaction. False with `error` when the file has a table of
    /// another shape, or SQLite fails; the file is then as it was.
    bool establish(std::string& error);

    /// Reads all values; tables and columns that are absent have none. False with `error` when the
    /// file has a table of another shape, or SQLite fails. Values that an answer cannot carry are
    /// marked and logged.
    bool load(StoreRows& rows, std::string& error);

    /// The SQL that writes values of one row: the parameters are the values, then the key of the
    /// row if the table has an index.
    static std::string updateSql(const StoreTable& table,
                                 const std::vector<const StoreColumn*>& columns);

private:
    struct Shape;

    bool establishAll(std::string& error);
    bool establishTable(const StoreTable& table, std::string& error);
    bool readShape(const StoreTable& table, Shape& shape, std::string& error);
    static bool fits(const StoreTable& table, const Shape& shape, std::string& error);
    bool createTable(const StoreTable& table, std::string& error);
    bool addColumns(const StoreTable& table, const Shape& shape, std::string& error);
    bool makeOnlyRow(const StoreTable& table, std::string& error);
    bool loadTable(const StoreTable& table, StoreRows& rows, std::string& error);
    bool execute(const std::string& sql, std::string& error);

    SqliteConnection& m_connection;
    const StoreCatalogue& m_catalogue;
};

}  // namespace vireo
