#pragma once

#include <string_view>

#include "Visibility.h"
#include "store/StoreCatalogue.h"

namespace vireo {

/// Why a request text was not understood.
struct StoreRequestFault {
    std::string_view what;       ///< a fixed text
    std::string_view name;       ///< the name that is meant, may be empty; part of the request
    std::string_view tableName;  ///< as far as it was read; part of the request
};

/// One request to the store, taken apart. Texts are parts of the request text and live as long.
///
/// The texts, with `Entry` only for a table that has an index:
///
///     <?xml version="1.0" encoding="utf-8"?><Schema name="T"><ReasonForMessage>read_request
///         </ReasonForMessage><ResultCols>C</ResultCols>[<Entry><I>key</I></Entry>]</Schema>
///     <?xml version="1.0" encoding="utf-8"?><Schema name="T"><ReasonForMessage>update_request
///         </ReasonForMessage>[<Entry><I>key</I>]<C>value</C>[</Entry>]</Schema>
///
/// (on one line each). Nothing in them is escaped, so they are not read as XML: a value ends where
/// the fixed closing text of the request begins, whatever it contains. Only a key in an update
/// cannot contain `</I><C>`.
struct VIREO_API StoreRequest {
    enum class Reason { eRead, eUpdate };

    Reason reason = Reason::eRead;
    const StoreTable* table = nullptr;    ///< in the catalogue
    const StoreColumn* column = nullptr;  ///< in the table
    std::string_view key;                 ///< of the row; empty for a table without index
    std::string_view value;               ///< to write; empty in a read

    /// Takes `text` apart; its names are looked up in `catalogue`. False: `fault` says why and
    /// `request` is not to be used. Allocates nothing.
    static bool parse(std::string_view text, const StoreCatalogue& catalogue, StoreRequest& request,
                      StoreRequestFault& fault) noexcept;
};

}  // namespace vireo
