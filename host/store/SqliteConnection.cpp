#include "store/SqliteConnection.h"

#include <sqlite3.h>

#include <new>

namespace vireo {
namespace {

// Nobody else writes to the file for long: a person with a tool, a backup.
constexpr int kBusyTimeoutMs = 1000;

}  // namespace

void SqliteStatement::Finalizer::operator()(sqlite3_stmt* statement) const noexcept {
    sqlite3_finalize(statement);
}

bool SqliteStatement::bind(int parameter, std::string_view text) noexcept {
    // A null pointer would be bound as NULL, not as an empty text.
    const char* data = text.empty() ? "" : text.data();
    return sqlite3_bind_text64(m_statement.get(), parameter, data, text.size(), SQLITE_STATIC,
                               SQLITE_UTF8) == SQLITE_OK;
}

SqliteStatement::Step SqliteStatement::step() noexcept {
    switch (sqlite3_step(m_statement.get())) {
        case SQLITE_ROW:
            return Step::eRow;
        case SQLITE_DONE:
            return Step::eDone;
        default:
            return Step::eFailed;
    }
}

void SqliteStatement::reset() noexcept {
    sqlite3_reset(m_statement.get());
    sqlite3_clear_bindings(m_statement.get());
}

std::optional<std::string_view> SqliteStatement::textAt(int column) {
    sqlite3_stmt* statement = m_statement.get();
    if (sqlite3_column_type(statement, column) == SQLITE_NULL) {
        return std::nullopt;
    }
    const unsigned char* text = sqlite3_column_text(statement, column);
    if (text == nullptr) {
        if (sqlite3_errcode(sqlite3_db_handle(statement)) == SQLITE_NOMEM) {
            throw std::bad_alloc();
        }
        return std::string_view();
    }
    return std::string_view(reinterpret_cast<const char*>(text),
                            static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
}

void SqliteConnection::Closer::operator()(sqlite3* database) const noexcept {
    sqlite3_close_v2(database);
}

SqliteConnection::Health SqliteConnection::open(const std::string& path, std::string& error) {
    sqlite3* database = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    const int result = sqlite3_open_v2(path.c_str(), &database, flags, nullptr);
    m_database.reset(database);
    Health health = Health::eGood;
    if (database == nullptr) {
        error = sqlite3_errstr(result);
        health = Health::eUnusable;
    } else if (result != SQLITE_OK) {
        error = errorText();
        health = healthOfLastFailure();
    } else {
        health = checkContent(error);
    }
    if (health == Health::eGood && !makeDurable(error)) {
        health = Health::eUnusable;
    }
    if (health != Health::eGood) {
        m_database.reset();
    }
    return health;
}

SqliteConnection::Health SqliteConnection::checkContent(std::string& error) {
    sqlite3_busy_timeout(m_database.get(), kBusyTimeoutMs);
    // Closing a damaged file must neither write into it nor delete its log.
    sqlite3_db_config(m_database.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);

    SqliteStatement check = prepare("PRAGMA integrity_check(1)");
    if (!check || check.step() != SqliteStatement::Step::eRow) {
        error = errorText();
        return healthOfLastFailure();
    }
    const std::string_view verdict = check.textAt(0).value_or("no answer");
    if (verdict != "ok") {
        error = verdict;
        return Health::eDamaged;
    }
    return Health::eGood;
}

bool SqliteConnection::makeDurable(std::string& error) {
    sqlite3_db_config(m_database.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
    if (!execute("PRAGMA synchronous=FULL")) {
        error = errorText();
        return false;
    }
    return pragmaAnswers("PRAGMA journal_mode=WAL", "wal", error) &&
           pragmaAnswers("PRAGMA synchronous", "2", error);
}

bool SqliteConnection::pragmaAnswers(const char* sql, std::string_view expected,
                                     std::string& error) {
    SqliteStatement pragma = prepare(sql);
    if (!pragma || pragma.step() != SqliteStatement::Step::eRow) {
        error = std::string(sql) + ": " + errorText();
        return false;
    }
    const std::string_view answer = pragma.textAt(0).value_or("");
    if (answer != expected) {
        error = std::string(sql) + " answered " + std::string(answer);
        return false;
    }
    return true;
}

SqliteConnection::Health SqliteConnection::healthOfLastFailure() const noexcept {
    const int code = sqlite3_errcode(m_database.get()) & 0xff;
    return code == SQLITE_NOTADB || code == SQLITE_CORRUPT ? Health::eDamaged : Health::eUnusable;
}

bool SqliteConnection::execute(const char* sql) noexcept {
    return sqlite3_exec(m_database.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

SqliteStatement SqliteConnection::prepare(const std::string& sql) noexcept {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v3(m_database.get(), sql.data(), static_cast<int>(sql.size()),
                       SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    return SqliteStatement(statement);
}

bool SqliteConnection::isInTransaction() const noexcept {
    return sqlite3_get_autocommit(m_database.get()) == 0;
}

long long SqliteConnection::changedRows() const noexcept {
    return sqlite3_changes64(m_database.get());
}

std::string SqliteConnection::errorText() const noexcept {
    try {
        return sqlite3_errmsg(m_database.get());
    } catch (const std::bad_alloc&) {
        return "out of memory";  // short enough to need none
    }
}

}  // namespace vireo
