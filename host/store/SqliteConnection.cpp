#include "store/SqliteConnection.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <filesystem>
#include <new>
#include <system_error>

namespace vireo {
namespace {

// SQLite's file system layer without locks. With exclusive locking it keeps the index of a
// write-ahead log in memory instead of a file.
constexpr const char* kSystemWithoutLocks = "unix-none";

bool hasContent(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && status.st_size > 0;
}

/// The URI of a file that does not change. Without a log, SQLite reads one on a read-only file
/// system in no other way.
std::string immutableUri(const std::string& path) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string uri = "file://";
    for (const char c : std::filesystem::absolute(path).string()) {
        if (c == '%' || c == '?' || c == '#') {
            const auto byte = static_cast<unsigned char>(c);
            uri.append({'%', kDigits[byte >> 4U], kDigits[byte & 0xfU]});
        } else {
            uri += c;
        }
    }
    return uri + "?immutable=1";
}

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

SqliteConnection::Health SqliteConnection::open(const std::string& path, int busyTimeoutMs,
                                                std::string& error) {
    Health health = openWith(path, SQLITE_OPEN_READWRITE, nullptr, error);
    if (health == Health::eGood) {
        sqlite3_busy_timeout(m_database.get(), busyTimeoutMs);
        health = checkContent(error);
    }
    if (health == Health::eGood && !makeDurable(error)) {
        health = healthOfLastFailure() == Health::eInUse ? Health::eInUse : Health::eUnusable;
    }
    if (health != Health::eGood) {
        m_database.reset();
    }
    return health;
}

SqliteConnection::Health SqliteConnection::openForReading(const std::string& path,
                                                          std::string& error) {
    const bool hasLog = hasContent(path + "-wal") || hasContent(path + "-journal");
    Health health = hasLog ? openWith(path, SQLITE_OPEN_READONLY, kSystemWithoutLocks, error)
                           : openWith(immutableUri(path), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI,
                                      nullptr, error);
    if (health == Health::eGood) {
        execute("PRAGMA locking_mode=EXCLUSIVE");
        health = checkContent(error);
    }
    if (health != Health::eGood) {
        m_database.reset();
    }
    return health;
}

SqliteConnection::Health SqliteConnection::openWith(const std::string& name, int flags,
                                                    const char* system, std::string& error) {
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(name.c_str(), &database,
                                       flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, system);
    m_database.reset(database);
    if (database == nullptr) {
        error = sqlite3_errstr(result);
        return Health::eUnusable;
    }
    if (result != SQLITE_OK) {
        error = errorText();
        return healthOfLastFailure();
    }
    return Health::eGood;
}

SqliteConnection::Health SqliteConnection::checkContent(std::string& error) {
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
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED) {
        return Health::eInUse;
    }
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
    return m_database != nullptr && sqlite3_get_autocommit(m_database.get()) == 0;
}

long long SqliteConnection::changedRows() const noexcept {
    return sqlite3_changes64(m_database.get());
}

std::string SqliteConnection::errorText() const noexcept {
    try {
        std::string text = sqlite3_errmsg(m_database.get());
        const int code = sqlite3_errcode(m_database.get()) & 0xff;
        const int reason = sqlite3_system_errno(m_database.get());
        if (reason != 0 && (code == SQLITE_IOERR || code == SQLITE_CANTOPEN)) {
            text.append(" (").append(std::generic_category().message(reason)).append(1, ')');
        }
        return text;
    } catch (const std::bad_alloc&) {
        return "out of memory";  // short enough to need none
    }
}

}  // namespace vireo
