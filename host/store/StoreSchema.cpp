#include "store/StoreSchema.h"

#include <strings.h>

#include <optional>
#include <string_view>
#include <vector>

#include "data/XmlText.h"
#include "log/Log.h"

namespace vireo {
namespace {

using Step = SqliteStatement::Step;

constexpr char kComponent[] = "DataAccessService";
constexpr char kFile[] = "./host/store/StoreSchema";

std::string quoted(const std::string& name) {
    return "\"" + name + "\"";
}

// SQLite does not tell upper from lower case in names.
bool isSameName(const std::string& a, const std::string& b) {
    return ::strcasecmp(a.c_str(), b.c_str()) == 0;
}

}  // namespace

/// A table as the file has it.
struct StoreSchema::Shape {
    struct Column {
        std::string name;
        std::string type;
        bool isKey;

        // Any other type would change values such as "007".
        bool isText(std::string& error) const {
            if (type == "TEXT") {
                return true;
            }
            error = "the file has column " + quoted(name) + " with type " + quoted(type) +
                    " instead of TEXT";
            return false;
        }
    };
    std::vector<Column> columns;

    const Column* find(const std::string& name) const {
        for (const Column& column : columns) {
            if (isSameName(column.name, name)) {
                return &column;
            }
        }
        return nullptr;
    }
    std::string keys() const {
        std::string result;
        for (const Column& column : columns) {
            if (column.isKey) {
                result += (result.empty() ? "" : ",") + column.name;
            }
        }
        return result;
    }
};

bool StoreSchema::establish(std::string& error) {
    if (!execute("BEGIN IMMEDIATE", error)) {
        return false;
    }
    if (establishAll(error) && execute("COMMIT", error)) {
        return true;
    }
    m_connection.execute("ROLLBACK");
    return false;
}

bool StoreSchema::establishAll(std::string& error) {
    for (const StoreTable& table : m_catalogue.tables()) {
        if (!establishTable(table, error)) {
            error.insert(0, "table " + quoted(table.name) + ": ");
            return false;
        }
    }
    return true;
}

bool StoreSchema::establishTable(const StoreTable& table, std::string& error) {
    Shape shape;
    if (!readShape(table, shape, error)) {
        return false;
    }
    if (shape.columns.empty()) {
        return createTable(table, error) && makeOnlyRow(table, error);
    }
    return fits(table, shape, error) && addColumns(table, shape, error) &&
           makeOnlyRow(table, error);
}

bool StoreSchema::fits(const StoreTable& table, const Shape& shape, std::string& error) {
    const std::string keys = shape.keys();
    if (!isSameName(keys, table.indexColumn)) {
        error = "the file has it with index " + quoted(keys) + ", the catalogue with " +
                quoted(table.indexColumn);
        return false;
    }
    if (table.isIndexed() && !shape.find(table.indexColumn)->isText(error)) {
        return false;
    }
    for (const StoreColumn& column : table.columns) {
        const Shape::Column* present = shape.find(column.name);
        if (present != nullptr && !present->isText(error)) {
            return false;
        }
    }
    return true;
}

bool StoreSchema::readShape(const StoreTable& table, Shape& shape, std::string& error) {
    SqliteStatement info =
        m_connection.prepare("SELECT name, upper(type), pk > 0 FROM pragma_table_info(?1)");
    Step step = Step::eFailed;
    if (info && info.bind(1, table.name)) {
        while ((step = info.step()) == Step::eRow) {
            shape.columns.push_back({std::string(info.textAt(0).value_or("")),
                                     std::string(info.textAt(1).value_or("")),
                                     info.textAt(2) == "1"});
        }
    }
    if (step == Step::eFailed) {
        error = m_connection.errorText();
        return false;
    }
    return true;
}

bool StoreSchema::createTable(const StoreTable& table, std::string& error) {
    std::string columns;
    if (table.isIndexed()) {
        columns = quoted(table.indexColumn) + " TEXT PRIMARY KEY NOT NULL,";
    }
    for (const StoreColumn& column : table.columns) {
        columns += quoted(column.name) + " TEXT,";
    }
    columns.pop_back();
    return execute("CREATE TABLE " + quoted(table.name) + " (" + columns + ")", error);
}

bool StoreSchema::addColumns(const StoreTable& table, const Shape& shape, std::string& error) {
    const std::string alter = "ALTER TABLE " + quoted(table.name) + " ADD COLUMN ";
    for (const StoreColumn& column : table.columns) {
        if (shape.find(column.name) == nullptr &&
            !execute(alter + quoted(column.name) + " TEXT", error)) {
            return false;
        }
    }
    return true;
}

bool StoreSchema::makeOnlyRow(const StoreTable& table, std::string& error) {
    if (table.isIndexed()) {
        return true;
    }
    SqliteStatement count = m_connection.prepare("SELECT count(*) FROM " + quoted(table.name));
    if (!count || count.step() != Step::eRow) {
        error = m_connection.errorText();
        return false;
    }
    const std::string rows(count.textAt(0).value_or(""));
    if (rows == "0") {
        return execute("INSERT INTO " + quoted(table.name) + " DEFAULT VALUES", error);
    }
    if (rows != "1") {
        error = "the file has " + rows + " rows, a table without index has one";
        return false;
    }
    return true;
}

bool StoreSchema::load(StoreRows& rows, std::string& error) {
    for (const StoreTable& table : m_catalogue.tables()) {
        if (!loadTable(table, rows, error)) {
            error.insert(0, "table " + quoted(table.name) + ": ");
            return false;
        }
    }
    return true;
}

bool StoreSchema::loadTable(const StoreTable& table, StoreRows& rows, std::string& error) {
    Shape shape;
    if (!readShape(table, shape, error)) {
        return false;
    }
    if (shape.columns.empty()) {
        return true;
    }
    if (!fits(table, shape, error)) {
        return false;
    }
    std::string sql = "SELECT " + (table.isIndexed() ? quoted(table.indexColumn) : "''");
    for (const StoreColumn& column : table.columns) {
        sql += "," + (shape.find(column.name) != nullptr ? quoted(column.name) : "NULL");
    }
    SqliteStatement select = m_connection.prepare(sql + " FROM " + quoted(table.name));
    Step step = Step::eFailed;
    std::size_t count = 0;
    while (select && (step = select.step()) == Step::eRow) {
        if (++count > 1 && !table.isIndexed()) {
            error = "the file has several rows, a table without index has one";
            return false;
        }
        const std::optional<std::string_view> keyText = select.textAt(0);
        if (!keyText) {
            continue;  // no request can name such a row
        }
        const std::string key(*keyText);
        for (const StoreColumn& column : table.columns) {
            const auto value = select.textAt(static_cast<int>(column.position) + 1);
            if (!value) {
                continue;
            }
            StoreCell& cell = *rows.make(table, column, key).cell;
            cell.value = *value;
            const std::optional<std::string> fault = XmlText::findUncarriable(*value);
            cell.isReadable = !fault;
            if (fault && loggingOnUni(kLogWarning)) {
                logAppUni(kComponent, kFile, kLogWarning, __LINE__,
                          "table \"%s\", column \"%s\": the value cannot be read: %s",
                          table.name.c_str(), column.name.c_str(), fault->c_str());
            }
        }
    }
    if (step == Step::eFailed) {
        error = m_connection.errorText();
        return false;
    }
    return true;
}

bool StoreSchema::execute(const std::string& sql, std::string& error) {
    if (m_connection.execute(sql.c_str())) {
        return true;
    }
    error = m_connection.errorText();
    return false;
}

std::string StoreSchema::updateSql(const StoreTable& table,
                                   const std::vector<const StoreColumn*>& columns) {
    const bool isIndexed = table.isIndexed();
    std::string names;
    std::string parameters;
    std::string assignments;
    int number = 0;
    for (const StoreColumn* column : columns) {
        const std::string name = quoted(column->name);
        const std::string parameter = "?" + std::to_string(++number);
        const char* separator = number > 1 ? "," : "";
        names.append(separator).append(name);
        parameters.append(separator).append(parameter);
        assignments.append(separator).append(name).append("=").append(isIndexed ? "excluded." + name
                                                                                : parameter);
    }
    if (!isIndexed) {
        return "UPDATE " + quoted(table.name) + " SET " + assignments;
    }
    const std::string index = quoted(table.indexColumn);
    return "INSERT INTO " + quoted(table.name) + "(" + names + "," + index + ") VALUES(" +
           parameters + ",?" + std::to_string(++number) + ") ON CONFLICT(" + index +
           ") DO UPDATE SET " + assignments;
}

}  // namespace vireo
