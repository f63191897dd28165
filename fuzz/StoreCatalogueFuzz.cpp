#include <string>

#include "Fuzz.h"
#include "store/StoreCatalogue.h"

namespace vireo::fuzz {
namespace {

std::string textOf(const StoreCatalogue& catalogue) {
    std::string text = "<store>";
    for (const StoreTable& table : catalogue.tables()) {
        text += "<table name=\"" + table.name + '"';
        text += table.isIndexed() ? " index=\"" + table.indexColumn + "\">" : ">";
        for (const StoreColumn& column : table.columns) {
            text += "<column name=\"" + column.name + '"';
            text += column.needsReboot ? " reboot=\"true\"/>" : "/>";
        }
        text += "</table>";
    }
    return text + "</store>";
}

void lookUpAll(const StoreCatalogue& catalogue) {
    for (const StoreTable& table : catalogue.tables()) {
        require(catalogue.findTable(table.name) == &table, "a table is found by its name");
        require(table.findColumn(table.indexColumn) == nullptr, "the index is no value column");
        for (const StoreColumn& column : table.columns) {
            require(table.findColumn(column.name) == &column, "a column is found by its name");
        }
    }
}

}  // namespace

void run(std::string_view input) {
    std::string error;
    const auto catalogue = StoreCatalogue::parse(input, error);
    require(catalogue.has_value() == error.empty(), "a refusal has a reason");
    require(error.find('\n') == std::string::npos, "a reason is one line");
    if (!catalogue) {
        return;
    }
    lookUpAll(*catalogue);
    const std::string text = textOf(*catalogue);
    const auto again = StoreCatalogue::parse(text, error);
    require(again && textOf(*again) == text, "a catalogue comes back from its text");
}

}  // namespace vireo::fuzz
