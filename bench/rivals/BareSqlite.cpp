#include "rivals/BareSqlite.h"

#include "harness/Failure.h"

namespace vireo::bench {

BareSqlite::BareSqlite(const Places& places, const std::vector<std::string>& tags)
    : m_directory(places.files), m_tags(tags) {
    sqlite3* database = nullptr;
    const int opened = sqlite3_open(m_directory.file("bare.db").c_str(), &database);
    m_database.reset(database);
    require(opened == SQLITE_OK, "SQLite cannot open its file");
    execute("PRAGMA journal_mode=WAL");
    execute("PRAGMA synchronous=FULL");
    execute("CREATE TABLE settings(tag TEXT PRIMARY KEY, value TEXT)");
    execute("BEGIN");
    for (const std::string& tag : m_tags) {
        execute(("INSERT INTO settings VALUES('" + tag + "','')").c_str());
    }
    execute("COMMIT");
    sqlite3_stmt* statement = nullptr;
    require(sqlite3_prepare_v2(database, "UPDATE settings SET value=?1 WHERE tag=?2", -1,
                               &statement, nullptr) == SQLITE_OK,
            "SQLite cannot prepare");
    m_update.reset(statement);
}

void BareSqlite::execute(const char* sql) {
    require(sqlite3_exec(m_database.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK, sql);
}

void BareSqlite::updateOne(const std::string& tag, const std::string& value) {
    sqlite3_stmt* statement = m_update.get();
    sqlite3_bind_text(statement, 1, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
    sqlite3_bind_text(statement, 2, tag.data(), static_cast<int>(tag.size()), SQLITE_STATIC);
    require(sqlite3_step(statement) == SQLITE_DONE, "SQLite cannot update");
    sqlite3_reset(statement);
}

void BareSqlite::update(std::size_t count) {
    m_isOdd = !m_isOdd;
    const std::string value = valueOf(m_isOdd ? 'a' : 'b');
    if (count == 1) {
        updateOne(m_tags.front(), value);  // a transaction of its own
        return;
    }
    execute("BEGIN IMMEDIATE");
    for (std::size_t i = 0; i < count; ++i) {
        updateOne(m_tags[i], value);
    }
    execute("COMMIT");
}

}  // namespace vireo::bench
