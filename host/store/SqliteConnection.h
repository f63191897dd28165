#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace vireo {

/// One prepared statement. Parameters and columns count as SQLite counts them: from 1 and from 0.
/// Ends before its connection does.
class SqliteStatement {
public:
    enum class Step { eRow, eDone, eFailed };

    SqliteStatement() = default;
    explicit SqliteStatement(sqlite3_stmt* statement) noexcept : m_statement(statement) {}

    explicit operator bool() const noexcept { return m_statement != nullptr; }

    /// Binds without a copy: `text` has to stay until `reset`.
    bool bind(int parameter, std::string_view text) noexcept;
    Step step() noexcept;
    /// Ends the execution and lets go of what was bound.
    void reset() noexcept;

    /// The value of a column of the current row as text; nothing for NULL. Valid until the next
    /// step or reset. Throws std::bad_alloc.
    std::optional<std::string_view> textAt(int column);

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const noexcept;
    };
    std::unique_ptr<sqlite3_stmt, Finalizer> m_statement;
};

/// One connection to a database file with the settings that the store needs. Not synchronised.
class SqliteConnection {
public:
    enum class Health {
        eGood,
        eDamaged,  ///< the content is not a sound database; the connection is closed
        eInUse,    ///< another program has it locked; the connection is closed
        eUnusable  ///< it cannot be told, or not be worked with; the connection is closed
    };

    /// Opens the existing file, checks all of its content, and sees to it that what is committed is
    /// on stable storage. Changes nothing in a damaged file and keeps what lies beside it.
    /// Waits at most `busyTimeoutMs` milliseconds, here and later, for others that use the file.
    Health open(const std::string& path, int busyTimeoutMs, std::string& error);

    /// Opens the existing file for reading, with what is in its write-ahead log, and checks all of
    /// its content. Works on a read-only or full file system, takes no locks and makes no files:
    /// for a file that nobody writes meanwhile.
    Health openForReading(const std::string& path, std::string& error);

    bool isOpen() const noexcept { return m_database != nullptr; }
    void close() noexcept { m_database.reset(); }

    /// Executes statements that have no result. False: `errorText` says why.
    bool execute(const char* sql) noexcept;
    /// A statement that will be used many times; an empty one when it cannot be prepared.
    SqliteStatement prepare(const std::string& sql) noexcept;

    /// Whether a transaction is open. SQLite ends one by itself after some failures.
    bool isInTransaction() const noexcept;
    /// How many rows the last finished insert or update wrote.
    long long changedRows() const noexcept;
    /// What the last failure was; never an empty text.
    std::string errorText() const noexcept;

private:
    struct Closer {
        void operator()(sqlite3* database) const noexcept;
    };

    Health openWith(const std::string& name, int flags, const char* system, std::string& error);
    Health checkContent(std::string& error);
    bool makeDurable(std::string& error);
    bool pragmaAnswers(const char* sql, std::string_view expected, std::string& error);
    Health healthOfLastFailure() const noexcept;

    std::unique_ptr<sqlite3, Closer> m_database;
};

}  // namespace vireo
