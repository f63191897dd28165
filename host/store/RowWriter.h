#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "store/SqliteConnection.h"
#include "store/StoreRows.h"

namespace vireo {

/// Writes pending cells into the file: one statement for each row, whatever the number of its
/// columns that changed, since a row is written as a whole anyway. Not synchronised. Ends before
/// the connection does.
class RowWriter {
public:
    /// What became of a write.
    enum class Result {
        eWritten,
        eFailed,   ///< the connection knows why
        eRefused,  ///< the file has no such row and does not take one
    };

    explicit RowWriter(const StoreCatalogue& catalogue);

    /// Writes all of it within the transaction that is open. Stops at the first failure. Throws
    /// std::bad_alloc.
    Result write(SqliteConnection& connection, const std::vector<StoreRows::Pending>& pending);

private:
    using Changes = std::vector<const StoreRows::Pending*>;

    Result writeRow(SqliteConnection& connection, const StoreRows::Pending* const* first,
                    std::size_t count);
    SqliteStatement& statementFor(SqliteConnection& connection,
                                  const StoreRows::Pending* const* first, std::size_t count);

    std::vector<std::vector<SqliteStatement>> m_ofOneColumn;  ///< by table and column, made at need
    std::unordered_map<std::string, SqliteStatement> m_ofSeveral;  ///< by table and columns
    Changes m_changes;                                             ///< kept for its memory
};

}  // namespace vireo
