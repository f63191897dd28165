#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Visibility.h"
#include "log/FaultNotice.h"
#include "service/Executable.h"
#include "services/DataAccessServiceIfc.h"
#include "store/SqliteDataAccess.h"
#include "store/StoreOptions.h"

namespace vireo {

/// The persistent store, whatever state its files are in. While they cannot be used, requests are
/// answered with an error; while they cannot be written, values are read and updates answered with
/// an error. A request that comes in such a state tries again to open the store, not more often
/// than the retry interval allows, so that no restart is needed once the files are right.
///
/// The log has one line when such a state begins, or its reason changes, and one when it ends.
class VIREO_API StoreGate : public Executable, public DataAccessServiceIfc {
public:
    /// Tries to open the store for the first time. `file` is its database; the file
    /// `catalogueName`, which comes from the configuration port at each attempt, says what it
    /// consists of.
    StoreGate(std::string file, std::string catalogueName, const StoreOptions& options);
    StoreGate(const StoreGate&) = delete;
    StoreGate& operator=(const StoreGate&) = delete;

    std::string request(const std::string& requestText) override;
    /// A bracket that begins while the store is closed collects nothing: the updates that are made
    /// in it once the store has opened reach stable storage one by one.
    void beginUpdate() override;
    bool commitUpdate() override;
    bool isRebootRequired() override;

private:
    using Clock = std::chrono::steady_clock;

    SqliteDataAccess* store();
    SqliteDataAccess* storeAfterAttempt();
    void attempt(const StoreOptions& options);
    std::unique_ptr<SqliteDataAccess> open(const StoreOptions& options, std::string& error) const;
    void adopt(std::unique_ptr<SqliteDataAccess> opened, const std::string& error);
    void use(std::unique_ptr<SqliteDataAccess> opened);

    const std::string m_file;
    const std::string m_catalogueName;
    const StoreOptions m_options;

    std::atomic<SqliteDataAccess*> m_store{nullptr};  ///< what requests go to; null: closed
    std::atomic<Clock::rep> m_nextAttempt{0};
    FaultNotice m_fault;

    std::mutex m_attemptMutex;
    /// All that were ever used, guarded by m_attemptMutex. Another thread may still be in an
    /// earlier one. There are three at most: without a file, read-only, written.
    std::vector<std::unique_ptr<SqliteDataAccess>> m_opened;
};

}  // namespace vireo
