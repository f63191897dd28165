#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

#include "Visibility.h"
#include "log/FaultNotice.h"
#include "service/Executable.h"
#include "services/DataAccessServiceIfc.h"
#include "store/RowWriter.h"
#include "store/SqliteConnection.h"
#include "store/StoreCatalogue.h"
#include "store/StoreOptions.h"
#include "store/StoreRequest.h"
#include "store/StoreRows.h"

namespace vireo {

/// The persistent store in one SQLite file. All values are kept in memory as well, so that a read
/// costs no SQL; while it is open nobody else may write values into the file. Others may read it.
///
/// An update that writes what is there already costs nothing. Updates within brackets
/// (`beginUpdate`) are pending in memory, and reach the file row by row in one transaction for all
/// threads: whatever makes one of them durable makes all of them durable. When it fails, all are
/// taken back, and a bracket that loses an update so is lost as a whole: its further updates are
/// refused, its `commitUpdate` is false.
///
/// Updates that are still pending when the store is closed never happened.
class VIREO_API SqliteDataAccess : public Executable, public DataAccessServiceIfc {
public:
    /// Opens the file, or makes it and the directories above it, and brings its tables in step
    /// with the catalogue. A damaged file is set aside under a new name, with an error line, and a
    /// new one is made.
    ///
    /// A file that cannot be written, or not be made, is read instead: `takesWrites` is false then,
    /// and `error` says why. Null with a one-line `error` when the file cannot be used, another
    /// program has it locked, or it has one of the tables in another shape; the file is then as it
    /// was.
    static std::unique_ptr<SqliteDataAccess> open(const std::string& path, StoreCatalogue catalogue,
                                                  std::string& error,
                                                  const StoreOptions& options = {});
    ~SqliteDataAccess() override;
    SqliteDataAccess(const SqliteDataAccess&) = delete;
    SqliteDataAccess& operator=(const SqliteDataAccess&) = delete;

    /// Whether updates reach a file. Never changes. If not, the values are those that the file had
    /// when it was opened, and updates are answered with an error.
    bool takesWrites() const { return m_connection.isOpen(); }
    /// Whether there was a file with content.
    bool hasFile() const { return m_hasFile; }

    /// An answer that finds no memory even for its error is empty.
    std::string request(const std::string& requestText) override;
    void beginUpdate() override;
    bool commitUpdate() override;
    bool isRebootRequired() override;

private:
    /// What a thread has begun and not ended.
    struct Bracket {
        unsigned depth = 0;
        bool hasPending = false;  ///< one of its updates is not yet on stable storage
        bool isLost = false;      ///< one of its updates was taken back
    };

    /// What became of an update or a commit. Moving it needs no memory.
    struct Outcome {
        const char* failure = nullptr;  ///< null: done
        std::string detail{};           ///< what SQLite said, may be empty
        bool isDurable = false;         ///< something new is on stable storage

        std::string text() const;
    };

    SqliteDataAccess(std::string path, StoreCatalogue catalogue);

    void report(const Outcome& outcome) noexcept;

    std::string answer(const std::string& requestText);
    std::string read(const StoreRequest& request);
    std::string update(const StoreRequest& request);

    // All below with m_writeMutex held.
    Outcome store(const StoreRequest& request);
    Outcome commitPending() noexcept;
    Outcome writePending() noexcept;
    Bracket* ownBracket() noexcept;
    void settle() noexcept;
    void undo() noexcept;

    const std::string m_path;
    const StoreCatalogue m_catalogue;
    bool m_hasFile = true;

    /// Guards the connection, the brackets, and who may change m_rows. Taken before m_rowsMutex.
    std::mutex m_writeMutex;
    SqliteConnection m_connection;
    RowWriter m_rowWriter;  ///< after the connection that its statements belong to
    std::unordered_map<std::thread::id, Bracket> m_brackets;

    /// Held for the moment in which m_rows changes, so that reads do not wait for the disk.
    std::shared_mutex m_rowsMutex;
    StoreRows m_rows;

    std::atomic<bool> m_isRebootRequired{false};
    FaultNotice m_writeFault;
};

}  // namespace vireo
