#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <vector>

#include "harness/Phone.h"
#include "harness/ScratchDirectory.h"

namespace vireo::bench {

/// One table of tags and values in SQLite, in this process, with a write-ahead log and full
/// synchronisation: what a program would do that kept its settings itself.
class BareSqlite {
public:
    BareSqlite(const Places& places, const std::vector<std::string>& tags);

    /// Gives the first `count` tags a new value, durably, in one transaction.
    void update(std::size_t count);

private:
    struct Closer {
        void operator()(sqlite3* database) const { sqlite3_close(database); }
    };
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };

    void execute(const char* sql);
    void updateOne(const std::string& tag, const std::string& value);

    ScratchDirectory m_directory;
    std::vector<std::string> m_tags;
    std::unique_ptr<sqlite3, Closer> m_database;
    std::unique_ptr<sqlite3_stmt, Finalizer> m_update;
    bool m_isOdd = false;
};

}  // namespace vireo::bench
