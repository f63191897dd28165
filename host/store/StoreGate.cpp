#include "store/StoreGate.h"

#include <exception>
#include <optional>
#include <utility>

#include "Ports.h"
#include "log/Log.h"
#include "store/StoreAnswer.h"
#include "store/StoreCatalogue.h"

namespace vireo {
namespace {

constexpr char kComponent[] = "DataAccessService";
constexpr char kFile[] = "./host/store/StoreGate";

}  // namespace

StoreGate::StoreGate(std::string file, std::string catalogueName, const StoreOptions& options)
    : m_file(std::move(file)), m_catalogueName(std::move(catalogueName)), m_options(options) {
    const std::lock_guard lock(m_attemptMutex);
    attempt(m_options);
}

SqliteDataAccess* StoreGate::store() {
    SqliteDataAccess* current = m_store.load(std::memory_order_acquire);
    return current != nullptr && current->takesWrites() ? current : storeAfterAttempt();
}

SqliteDataAccess* StoreGate::storeAfterAttempt() {
    const auto isDue = [this] {
        return Clock::now().time_since_epoch().count() >= m_nextAttempt.load();
    };
    if (isDue()) {
        // Nobody waits for an attempt that another thread makes: the file may be slow.
        const std::unique_lock lock(m_attemptMutex, std::try_to_lock);
        if (lock && isDue()) {
            // Nor does the message wait for another program; the next attempt comes soon enough.
            StoreOptions options = m_options;
            options.busyTimeoutMs = 0;
            attempt(options);
        }
    }
    return m_store.load(std::memory_order_acquire);
}

void StoreGate::attempt(const StoreOptions& options) {
    try {
        std::string error;
        std::unique_ptr<SqliteDataAccess> opened = open(options, error);
        adopt(std::move(opened), error);
    } catch (const std::exception& exception) {
        logExc(kComponent, kFile, __LINE__, "opening the store", exception);
    }
    const auto interval = std::chrono::milliseconds(m_options.retryIntervalMs);
    m_nextAttempt = (Clock::now() + interval).time_since_epoch().count();
}

std::unique_ptr<SqliteDataAccess> StoreGate::open(const StoreOptions& options,
                                                  std::string& error) const {
    ConfigPort* files = installedPorts().config;
    std::string text;
    if (files == nullptr) {
        error = "no configuration directory";
        return nullptr;
    }
    if (!files->readConfigFile(m_catalogueName, text, error)) {
        return nullptr;
    }
    std::optional<StoreCatalogue> catalogue = StoreCatalogue::parse(text, error);
    if (!catalogue) {
        error.insert(0, "the configuration file " + m_catalogueName + ": ");
        return nullptr;
    }
    return SqliteDataAccess::open(m_file, std::move(*catalogue), error, options);
}

void StoreGate::adopt(std::unique_ptr<SqliteDataAccess> opened, const std::string& error) {
    const SqliteDataAccess* current = m_store.load();
    if (opened && opened->takesWrites()) {
        use(std::move(opened));
        if (m_fault.clear() && loggingOnUni(kLogWarning)) {
            logAppUni(kComponent, kFile, kLogWarning, __LINE__,
                      "STORE OPEN: %s is read and written now", m_file.c_str());
        }
        return;
    }
    if (opened && (current == nullptr || (opened->hasFile() && !current->hasFile()))) {
        use(std::move(opened));
        current = m_store.load();
    }
    if (!m_fault.raise(error) || !loggingOnUni(kLogError)) {
        return;
    }
    if (current == nullptr) {
        logAppUni(kComponent, kFile, kLogError, __LINE__,
                  "STORE CLOSED: %s. Items that are kept in %s are neither read nor written until "
                  "this is put right; no restart is needed",
                  error.c_str(), m_file.c_str());
    } else {
        logAppUni(kComponent, kFile, kLogError, __LINE__,
                  "STORE READ-ONLY: %s. %s, writes are refused until this is put right; no restart "
                  "is needed",
                  error.c_str(),
                  current->hasFile() ? "What is kept can be read" : "Nothing was kept yet");
    }
}

void StoreGate::use(std::unique_ptr<SqliteDataAccess> opened) {
    m_opened.push_back(std::move(opened));
    m_store.store(m_opened.back().get(), std::memory_order_release);
}

std::string StoreGate::request(const std::string& requestText) {
    SqliteDataAccess* open = store();
    if (open != nullptr) {
        return open->request(requestText);
    }
    try {
        return StoreAnswer::error("", "the store is closed");
    } catch (const std::exception&) {
        return {};
    }
}

void StoreGate::beginUpdate() {
    if (SqliteDataAccess* open = store()) {
        open->beginUpdate();
    }
}

bool StoreGate::commitUpdate() {
    // Without an attempt to open: what did not begin there need not end there.
    SqliteDataAccess* open = m_store.load(std::memory_order_acquire);
    return open == nullptr || open->commitUpdate();
}

bool StoreGate::isRebootRequired() {
    SqliteDataAccess* open = m_store.load(std::memory_order_acquire);
    return open != nullptr && open->isRebootRequired();
}

}  // namespace vireo
