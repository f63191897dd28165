#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vireo {

/// The texts that the store answers with. Values and error texts are escaped; the names come from
/// the catalogue or have been found to consist of name characters.
class StoreAnswer {
public:
    /// The answer to a read: with no value the element of the column is left out.
    static std::string read(std::string_view table, std::string_view column,
                            const std::optional<std::string>& value);
    /// The answer to an update that was carried out.
    static std::string updated(std::string_view table);
    /// The answer to what could not be carried out. `what` may contain any bytes.
    static std::string error(std::string_view table, std::string_view what);
};

}  // namespace vireo
