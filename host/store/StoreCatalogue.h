#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "TextHash.h"
#include "Visibility.h"

namespace vireo {

template <typename Value>
using StoreNameMap = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

/// One value column of a store table. Its values are texts.
struct StoreColumn {
    std::string name;
    std::size_t position = 0;  ///< among the columns of its table
    bool needsReboot = false;  ///< a changed value takes effect only after a reboot
};

/// One table of the store.
struct VIREO_API StoreTable {
    std::string name;
    std::string indexColumn;   ///< empty: the table has exactly one row
    std::size_t position = 0;  ///< among the tables of the catalogue
    std::vector<StoreColumn> columns;

    bool isIndexed() const noexcept { return !indexColumn.empty(); }
    /// The value column of exactly this name, or null. The index column is not one of them.
    const StoreColumn* findColumn(std::string_view columnName) const noexcept;

private:
    friend class StoreCatalogue;
    StoreNameMap<std::size_t> m_columnsByName;
};

/// What the store consists of. Immutable, so safe from every thread. Pointers that it hands out
/// live as long as the catalogue stays where it is.
///
/// Read from an XML text:
///
///     <store>
///       <table name="PhoneSettings">
///         <column name="RingerMelody"/>
///         <column name="SipServer" reboot="true"/>
///       </table>
///       <table name="KeyTable" index="KeyIndex">
///         <column name="Label"/>
///       </table>
///     </store>
///
/// Names consist of ASCII letters, digits, '_', '-' and '.', and start with a letter or '_'. Within
/// one table, and among the tables, they differ in more than upper and lower case.
class VIREO_API StoreCatalogue {
public:
    /// All or nothing: without a result, `error` names what is wrong in one line.
    static std::optional<StoreCatalogue> parse(std::string_view xml, std::string& error);

    const std::vector<StoreTable>& tables() const noexcept { return m_tables; }
    /// The table of exactly this name, or null.
    const StoreTable* findTable(std::string_view name) const noexcept;

    /// Whether `c` may stand in a name (behind its first character).
    static bool isNameCharacter(char c) noexcept {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || c == '-' || c == '.';
    }

private:
    StoreCatalogue() = default;
    void indexNames();

    std::vector<StoreTable> m_tables;
    StoreNameMap<std::size_t> m_tablesByName;
};

}  // namespace vireo
