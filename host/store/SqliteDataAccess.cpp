#include "store/SqliteDataAccess.h"

#include <exception>
#include <optional>
#include <utility>

#include "data/XmlText.h"
#include "log/Log.h"
#include "store/StoreAnswer.h"
#include "store/StoreOpening.h"
#include "store/StoreSchema.h"

namespace vireo {
namespace {

constexpr char kComponent[] = "DataAccessService";
constexpr char kFile[] = "./host/store/SqliteDataAccess";

/// The answer to what cannot be done, and its log line.
std::string refuse(std::string_view table, const std::string& what, int level = kLogWarning) {
    if (loggingOnUni(level)) {
        logAppUni(kComponent, kFile, level, __LINE__, "request refused, table \"%.*s\": %s",
                  static_cast<int>(table.size()), table.data(), what.c_str());
    }
    return StoreAnswer::error(table, what);
}

std::string describe(const StoreRequestFault& fault) {
    std::string what(fault.what);
    if (!fault.name.empty()) {
        what.append(" \"").append(fault.name).append("\"");
    }
    return what;
}

}  // namespace

std::unique_ptr<SqliteDataAccess> SqliteDataAccess::open(const std::string& path,
                                                         StoreCatalogue catalogue,
                                                         std::string& error,
                                                         const StoreOptions& options) {
    try {
        std::unique_ptr<SqliteDataAccess> store(new SqliteDataAccess(path, std::move(catalogue)));
        OpenedStore opened(store->m_catalogue);
        if (StoreOpening(path, store->m_catalogue, options).run(opened, error)) {
            store->m_connection = std::move(opened.connection);
            store->m_rows = std::move(opened.rows);
            store->m_hasFile = opened.hasFile;
            return store;
        }
    } catch (const std::exception& exception) {
        logExc(kComponent, kFile, __LINE__, "open", exception);
        error = exception.what();
    }
    return nullptr;
}

SqliteDataAccess::SqliteDataAccess(std::string path, StoreCatalogue catalogue)
    : m_path(std::move(path)),
      m_catalogue(std::move(catalogue)),
      m_rowWriter(m_catalogue),
      m_rows(m_catalogue) {}

SqliteDataAccess::~SqliteDataAccess() {
    if (!m_rows.pending().empty() && loggingOnUni(kLogWarning)) {
        logAppUni(kComponent, kFile, kLogWarning, __LINE__,
                  "closed with %zu updates that were never committed", m_rows.pending().size());
    }
}

std::string SqliteDataAccess::request(const std::string& requestText) {
    try {
        return answer(requestText);
    } catch (const std::exception& exception) {
        logExc(kComponent, kFile, __LINE__, "request", exception);
        try {
            return refuse("", exception.what());
        } catch (const std::exception&) {
            return {};
        }
    }
}

std::string SqliteDataAccess::answer(const std::string& requestText) {
    StoreRequest request;
    StoreRequestFault fault;
    if (!StoreRequest::parse(requestText, m_catalogue, request, fault)) {
        return refuse(fault.tableName, describe(fault));
    }
    return request.reason == StoreRequest::Reason::eRead ? read(request) : update(request);
}

std::string SqliteDataAccess::read(const StoreRequest& request) {
    const std::string& column = request.column->name;
    {
        const std::shared_lock lock(m_rowsMutex);
        const StoreCell* cell = m_rows.find(*request.table, *request.column, request.key);
        if (cell == nullptr) {
            return StoreAnswer::read(request.table->name, column, std::nullopt);
        }
        if (cell->isReadable) {
            return StoreAnswer::read(request.table->name, column, cell->value);
        }
    }
    return refuse(request.table->name,
                  "column \"" + column + "\" has a value that an answer cannot carry");
}

std::string SqliteDataAccess::update(const StoreRequest& request) {
    // Made first: once the value is stored nothing may fail.
    std::string updated = StoreAnswer::updated(request.table->name);
    std::string failure;
    if (const auto inKey = XmlText::findUncarriable(request.key)) {
        failure = "index \"" + request.table->indexColumn + "\": " + *inKey;
    } else if (const auto inValue = XmlText::findUncarriable(request.value)) {
        failure = "column \"" + request.column->name + "\": " + *inValue;
    } else {
        std::unique_lock lock(m_writeMutex);
        const Outcome outcome = store(request);
        lock.unlock();
        report(outcome);
        if (outcome.failure != nullptr) {
            // A lasting fault is reported when it begins and when it ends.
            return refuse(request.table->name,
                          "column \"" + request.column->name + "\": " + outcome.text(),
                          takesWrites() && !m_writeFault.isRaised() ? kLogWarning : kLogDebug);
        }
    }
    if (!failure.empty()) {
        return refuse(request.table->name, failure);
    }
    return updated;
}

SqliteDataAccess::Outcome SqliteDataAccess::store(const StoreRequest& request) {
    Bracket* bracket = ownBracket();
    if (bracket != nullptr && bracket->isLost) {
        return {"an earlier update since beginUpdate was taken back", {}};
    }
    const StoreCell* present = m_rows.find(*request.table, *request.column, request.key);
    if (present != nullptr && present->holds(request.value)) {
        if (!present->isPending) {
            return {};
        }
        if (bracket != nullptr) {
            bracket->hasPending = true;
            return {};
        }
        return commitPending();
    }

    if (!takesWrites()) {
        return {"the store takes no writes", {}};
    }
    std::string value(request.value);
    {
        const std::lock_guard rowsLock(m_rowsMutex);
        const StoreRows::Place place = m_rows.make(*request.table, *request.column, request.key);
        m_rows.reserveWrite();
        m_rows.write(place, std::move(value));
    }
    if (bracket != nullptr) {
        bracket->hasPending = true;
        return {};
    }
    return commitPending();
}

SqliteDataAccess::Outcome SqliteDataAccess::commitPending() noexcept {
    if (m_rows.pending().empty()) {
        return {};
    }
    Outcome outcome = writePending();
    if (outcome.failure == nullptr) {
        settle();
        return {.isDurable = true};
    }
    if (m_connection.isInTransaction()) {
        m_connection.execute("ROLLBACK");
    }
    undo();
    return outcome;
}

SqliteDataAccess::Outcome SqliteDataAccess::writePending() noexcept {
    try {
        if (!m_connection.execute("BEGIN IMMEDIATE")) {
            return {"cannot write", m_connection.errorText()};
        }
        switch (m_rowWriter.write(m_connection, m_rows.pending())) {
            case RowWriter::Result::eFailed:
                return {"cannot write", m_connection.errorText()};
            case RowWriter::Result::eRefused:
                return {"the file does not take the value", {}};
            case RowWriter::Result::eWritten:
                break;
        }
        if (m_connection.execute("COMMIT")) {
            return {};
        }
        return {"cannot commit", m_connection.errorText()};
    } catch (const std::exception& exception) {
        logExc(kComponent, kFile, __LINE__, "commit", exception);
        return {"no memory to write with", {}};
    }
}

SqliteDataAccess::Bracket* SqliteDataAccess::ownBracket() noexcept {
    const auto found = m_brackets.find(std::this_thread::get_id());
    return found == m_brackets.end() ? nullptr : &found->second;
}

void SqliteDataAccess::settle() noexcept {
    if (m_rows.settle()) {
        m_isRebootRequired = true;
    }
    for (auto& [thread, bracket] : m_brackets) {
        bracket.hasPending = false;
    }
}

void SqliteDataAccess::undo() noexcept {
    {
        const std::lock_guard lock(m_rowsMutex);
        m_rows.undo();
    }
    for (auto& [thread, bracket] : m_brackets) {
        bracket.isLost |= bracket.hasPending;
        bracket.hasPending = false;
    }
}

void SqliteDataAccess::beginUpdate() {
    try {
        const std::lock_guard lock(m_writeMutex);
        ++m_brackets[std::this_thread::get_id()].depth;
    } catch (const std::exception& exception) {
        // Each update is then durable by itself, which is more than was asked for.
        logExc(kComponent, kFile, __LINE__, "beginUpdate", exception);
    }
}

bool SqliteDataAccess::commitUpdate() {
    Outcome outcome;
    {
        const std::lock_guard lock(m_writeMutex);
        Bracket* bracket = ownBracket();
        if (bracket != nullptr && bracket->isLost) {
            outcome.failure = "an update since beginUpdate was taken back";
        } else {
            outcome = commitPending();
        }
        if (bracket != nullptr && --bracket->depth == 0) {
            m_brackets.erase(std::this_thread::get_id());
        }
    }
    report(outcome);
    const int level = m_writeFault.isRaised() ? kLogDebug : kLogError;
    if (outcome.failure != nullptr && loggingOnUni(level)) {
        logAppUni(kComponent, kFile, level, __LINE__, "commitUpdate: %s%s%s", outcome.failure,
                  outcome.detail.empty() ? "" : ": ", outcome.detail.c_str());
    }
    return outcome.failure == nullptr;
}

void SqliteDataAccess::report(const Outcome& outcome) noexcept {
    if (!outcome.detail.empty()) {
        bool isNews = true;
        try {
            isNews = m_writeFault.raise(outcome.detail);
        } catch (const std::exception&) {
            // Deliberate: without memory a line too many is better than none.
        }
        if (isNews && loggingOnUni(kLogError)) {
            logAppUni(kComponent, kFile, kLogError, __LINE__,
                      "STORE NOT WRITTEN: %s: %s. Old values stay and can be read, writes are "
                      "refused until this is put right; no restart is needed",
                      m_path.c_str(), outcome.detail.c_str());
        }
    } else if (outcome.isDurable && m_writeFault.clear() && loggingOnUni(kLogWarning)) {
        logAppUni(kComponent, kFile, kLogWarning, __LINE__, "STORE WRITTEN AGAIN: %s",
                  m_path.c_str());
    }
}

bool SqliteDataAccess::isRebootRequired() {
    return m_isRebootRequired;
}

std::string SqliteDataAccess::Outcome::text() const {
    return detail.empty() ? failure : failure + (": " + detail);
}

}  // namespace vireo
