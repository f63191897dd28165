#pragma once

#include <string>
#include <utility>

#include "store/SqliteConnection.h"
#include "store/StoreCatalogue.h"
#include "store/StoreOptions.h"
#include "store/StoreRows.h"

namespace vireo {

/// A store's file as it was opened: its values, and the connection that takes further ones.
struct OpenedStore {
    explicit OpenedStore(const StoreCatalogue& catalogue) : rows(catalogue) {}

    SqliteConnection connection;  ///< not open when the file could only be read
    StoreRows rows;
    bool hasFile = true;  ///< whether there was a file with content
};

/// Opens the file of a store for writing, or at least for reading. Used once.
class StoreOpening {
public:
    /// `catalogue` outlives this.
    StoreOpening(std::string path, const StoreCatalogue& catalogue, const StoreOptions& options)
        : m_path(std::move(path)), m_catalogue(catalogue), m_options(options) {}

    /// False with a one-line `error` when nothing can be done with the file; it is as it was then.
    /// When it can only be read, `error` says why it is not written.
    bool run(OpenedStore& opened, std::string& error);

private:
    using Health = SqliteConnection::Health;

    Health openForWriting(OpenedStore& opened, std::string& error) const;
    bool openForReading(OpenedStore& opened, std::string& error) const;
    Health connect(SqliteConnection& connection, std::string& error) const;
    bool setDamagedAside(const std::string& damage, std::string& error) const;

    const std::string m_path;
    const StoreCatalogue& m_catalogue;
    const StoreOptions m_options;
};

}  // namespace vireo
