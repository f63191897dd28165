#include "store/StoreCatalogue.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <pugixml.hpp>
#include <unordered_set>
#include <utility>

namespace vireo {
namespace {

// Element names of the answers: a column of such a name could not be told from them.
constexpr std::array<std::string_view, 3> kReservedColumnNames = {"Schema", "ReasonForMessage",
                                                                  "Error"};
// SQLite keeps such tables for itself.
constexpr std::string_view kReservedTablePrefix = "sqlite_";

bool isLetter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isName(std::string_view text) noexcept {
    return !text.empty() && (isLetter(text.front()) || text.front() == '_') &&
           std::all_of(text.begin(), text.end(), StoreCatalogue::isNameCharacter);
}

// SQLite does not tell upper from lower case in names.
std::string folded(std::string_view name) {
    std::string result(name);
    for (char& c : result) {
        c = (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return result;
}

/// Any text of the file, for a fault, which stays one line.
std::string quoted(std::string_view text) {
    std::string result = std::string(1, '"').append(text).append(1, '"');
    std::replace_if(
        result.begin(), result.end(), [](unsigned char c) { return c < 0x20; }, '?');
    return result;
}

/// Fills a list of tables from the elements. The first fault ends it; `fault` names it.
class CatalogueReader {
public:
    explicit CatalogueReader(std::string& fault) : m_fault(fault) {}

    bool readStore(const pugi::xml_node& document, std::vector<StoreTable>& tables) {
        const pugi::xml_node store = document.first_child();
        if (std::string_view(store.name()) != "store" || store.next_sibling()) {
            return fail("the root element is not one \"store\"");
        }
        if (!hasOnlyAttributes(store, {}, "element \"store\"")) {
            return false;
        }
        for (const pugi::xml_node& node : store.children()) {
            if (!isElement(node, "table", "element \"store\"") || !readTable(node, tables)) {
                return false;
            }
        }
        return true;
    }

private:
    using Names = std::unordered_set<std::string>;

    bool readTable(const pugi::xml_node& node, std::vector<StoreTable>& tables) {
        StoreTable table;
        table.position = tables.size();
        if (!readName(node, "table", "element \"store\"", m_tableNames, table.name)) {
            return false;
        }
        const std::string where = "table " + quoted(table.name);
        if (!hasOnlyAttributes(node, {"name", "index"}, where)) {
            return false;
        }
        if (folded(table.name).starts_with(kReservedTablePrefix)) {
            return fail(where + ": names that start with \"sqlite_\" are reserved");
        }
        Names columnNames;
        if (const pugi::xml_attribute index = node.attribute("index")) {
            table.indexColumn = index.value();
            if (!isName(table.indexColumn)) {
                return fail(where + ": bad index name " + quoted(table.indexColumn));
            }
            columnNames.insert(folded(table.indexColumn));
        }
        for (const pugi::xml_node& child : node.children()) {
            if (!isElement(child, "column", where) ||
                !readColumn(child, where, columnNames, table.columns)) {
                return false;
            }
        }
        if (table.columns.empty()) {
            return fail(where + " has no columns");
        }
        tables.push_back(std::move(table));
        return true;
    }

    bool readColumn(const pugi::xml_node& node, const std::string& tableText, Names& names,
                    std::vector<StoreColumn>& columns) {
        StoreColumn column;
        column.position = columns.size();
        if (!readName(node, "column", tableText, names, column.name)) {
            return false;
        }
        const std::string where = tableText + ", column " + quoted(column.name);
        if (!hasOnlyAttributes(node, {"name", "reboot"}, where)) {
            return false;
        }
        if (std::find(kReservedColumnNames.begin(), kReservedColumnNames.end(), column.name) !=
            kReservedColumnNames.end()) {
            return fail(where + ": the name is reserved");
        }
        const std::string_view reboot = node.attribute("reboot").as_string("false");
        if (reboot != "true" && reboot != "false") {
            return fail(where + ": reboot is neither \"true\" nor \"false\"");
        }
        if (node.first_child()) {
            return fail(where + " is not empty");
        }
        column.needsReboot = reboot == "true";
        columns.push_back(std::move(column));
        return true;
    }

    bool readName(const pugi::xml_node& node, const char* kind, const std::string& where,
                  Names& taken, std::string& name) {
        const pugi::xml_attribute attribute = node.attribute("name");
        if (!attribute) {
            return fail(where + ": a " + kind + " without a name");
        }
        name = attribute.value();
        if (!isName(name)) {
            return fail(where + ": bad " + kind + " name " + quoted(name));
        }
        if (!taken.insert(folded(name)).second) {
            return fail(where + ": duplicate " + kind + " name " + quoted(name));
        }
        return true;
    }

    bool isElement(const pugi::xml_node& node, std::string_view expected,
                   const std::string& where) {
        if (node.type() != pugi::node_element) {
            return fail(where + ": text between the elements");
        }
        return expected == node.name() || fail(where + ": unknown element " + quoted(node.name()));
    }

    bool hasOnlyAttributes(const pugi::xml_node& node,
                           std::initializer_list<std::string_view> known,
                           const std::string& where) {
        for (const pugi::xml_attribute& attribute : node.attributes()) {
            const std::string_view name = attribute.name();
            if (std::find(known.begin(), known.end(), name) == known.end()) {
                return fail(where + ": unknown attribute " + quoted(name));
            }
            if (node.attribute(attribute.name()) != attribute) {
                return fail(where + ": attribute " + quoted(name) + " twice");
            }
        }
        return true;
    }

    bool fail(std::string fault) {
        m_fault = std::move(fault);
        return false;
    }

    std::string& m_fault;
    Names m_tableNames;
};

template <typename Named>
const Named* findNamed(const StoreNameMap<std::size_t>& positions, const std::vector<Named>& all,
                       std::string_view name) noexcept {
    const auto found = positions.find(name);
    return found == positions.end() ? nullptr : &all[found->second];
}

}  // namespace

const StoreColumn* StoreTable::findColumn(std::string_view columnName) const noexcept {
    return findNamed(m_columnsByName, columns, columnName);
}

const StoreTable* StoreCatalogue::findTable(std::string_view name) const noexcept {
    return findNamed(m_tablesByName, m_tables, name);
}

std::optional<StoreCatalogue> StoreCatalogue::parse(std::string_view xml, std::string& error) {
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(xml.data(), xml.size());
    if (!parsed) {
        error = std::string(parsed.description()) + " at byte " + std::to_string(parsed.offset);
        return std::nullopt;
    }
    StoreCatalogue catalogue;
    if (!CatalogueReader(error).readStore(document, catalogue.m_tables)) {
        return std::nullopt;
    }
    catalogue.indexNames();
    return catalogue;
}

void StoreCatalogue::indexNames() {
    for (StoreTable& table : m_tables) {
        m_tablesByName.emplace(table.name, table.position);
        for (const StoreColumn& column : table.columns) {
            table.m_columnsByName.emplace(column.name, column.position);
        }
    }
}

}  // namespace vireo
