#include "harness/PhoneConfiguration.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>
#include <string_view>
#include <utility>
#include <vector>

#include "harness/Failure.h"

namespace vireo::bench {
namespace {

constexpr std::size_t kColumnsOfSettings = 40;
constexpr std::size_t kItemsInSettings = 400;
constexpr std::size_t kColumnsOfKeys = 10;

std::string numbered(const char* kind, std::size_t number) {
    char text[48];
    std::snprintf(text, sizeof text, "%s-%06zu", kind, number);
    return text;
}

std::string element(const char* name, const std::string& text) {
    return std::string("<") + name + '>' + text + "</" + name + '>';
}

/// Where the store keeps an item.
struct Place {
    explicit Place(std::size_t number) {
        if (number < kItemsInSettings) {
            table = numbered("Settings", number / kColumnsOfSettings);
            column = numbered("Column", number % kColumnsOfSettings);
        } else {
            table = "Keys";
            column = numbered("Column", (number - kItemsInSettings) % kColumnsOfKeys);
            index = std::to_string((number - kItemsInSettings) / kColumnsOfKeys);
        }
    }
    std::string table;
    std::string column;
    std::string index;
};

/// The rows of one document, written in order or shuffled.
class Rows {
public:
    explicit Rows(bool isShuffled) : m_isShuffled(isShuffled) {}

    void add(std::string row) { m_rows.push_back("    <item>" + row + "</item>\n"); }
    std::string document(const char* name) {
        if (m_isShuffled) {
            std::mt19937 random(4711);
            std::shuffle(m_rows.begin(), m_rows.end(), random);
        }
        std::string text = std::string("  <document name=\"") + name + "\" schema=\"list\">\n";
        for (const std::string& row : m_rows) {
            text += row;
        }
        return text + "  </document>\n";
    }

private:
    bool m_isShuffled;
    std::vector<std::string> m_rows;
};

std::string itemRow(const std::string& tag) {
    return element("rootId", tag) + element("schema", "text");
}

void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    require(static_cast<bool>(file.flush()), "cannot write the configuration of a phone");
}

std::string dxl(const std::string& content) {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<dxl>\n" + content + "</dxl>\n";
}

std::string service(std::initializer_list<const char*> imports, const char* managementId,
                    const char* itemMap) {
    std::string text;
    for (const char* file : imports) {
        text += element("import", file);
    }
    text += element("managementId", managementId) + element("itemMap", itemMap);
    return "    " + element("service", text) + '\n';
}

std::string table(const std::string& name, std::size_t columns, const char* index) {
    std::string text = "  <table name=\"" + name + '"' + index + ">\n";
    for (std::size_t i = 0; i < columns; ++i) {
        text += "    <column name=\"" + numbered("Column", i) + "\"/>\n";
    }
    return text + "  </table>\n";
}

std::string storeCatalogue() {
    std::string text = "<store>\n";
    for (std::size_t i = 0; i < kItemsInSettings / kColumnsOfSettings; ++i) {
        text += table(numbered("Settings", i), kColumnsOfSettings, "");
    }
    return text + table("Keys", kColumnsOfKeys, " index=\"KeyIndex\"") + "</store>\n";
}

}  // namespace

PhoneConfiguration::PhoneConfiguration(std::size_t items, bool isShuffled)
    : m_items(items), m_isShuffled(isShuffled) {}

std::string PhoneConfiguration::storedTag(std::size_t number) {
    return numbered("stored-setting", number);
}

std::string PhoneConfiguration::memoryTag(std::size_t number) {
    return numbered("memory-setting", number);
}

std::string PhoneConfiguration::ownedTag(std::size_t number) {
    return numbered("owned-setting", number);
}

std::string PhoneConfiguration::absentTag(std::size_t number) {
    return numbered("absent-setting", number);
}

void PhoneConfiguration::write(const std::filesystem::path& directory) const {
    std::filesystem::create_directories(directory);
    Rows own(m_isShuffled);
    Rows mapping(m_isShuffled);
    Rows keys(m_isShuffled);
    Rows owned(m_isShuffled);
    Rows absent(m_isShuffled);
    for (std::size_t i = 0; i < storedCount(); ++i) {
        const Place place(i);
        own.add(itemRow(storedTag(i)));
        if (place.index.empty()) {
            mapping.add(element("rootId", storedTag(i)) + element("nodeId", storedTag(i)) +
                        element("dasSchemaName", place.table) +
                        element("dasItemName", place.column));
        } else {
            keys.add(element("rootId", storedTag(i)) + element("dasIndexValue", place.index) +
                     element("dasItemName", place.column));
        }
    }
    for (std::size_t i = 0; i < memoryCount(); ++i) {
        own.add(itemRow(memoryTag(i)));
    }
    for (std::size_t i = 0; i < ownedCount(); ++i) {
        owned.add(itemRow(ownedTag(i)));
    }
    for (std::size_t i = 0; i < absentCount(); ++i) {
        absent.add(itemRow(absentTag(i)));
    }
    writeFile(directory / "vcmsInit.xml",
              dxl("  <document name=\"vcmsServiceList\" schema=\"list\">\n" +
                  service({"Own.xml", "Store.xml"}, "VcmsMgmtId", "OwnItemMap") +
                  service({"Owned.xml"}, kOwnerId, "OwnedItemMap") +
                  service({"Absent.xml"}, "AbsentMgmtId", "AbsentItemMap") + "  </document>\n"));
    writeFile(directory / "Own.xml", dxl("  <schema name=\"text\" type=\"string\"></schema>\n" +
                                         own.document("OwnItemMap")));
    const std::string keyTable =
        element("table", element("dasSchemaName", "Keys") + element("dasIndexName", "KeyIndex") +
                             element("itemMap", "KeyItems"));
    writeFile(
        directory / "Store.xml",
        dxl("  <document name=\"VcmsTableList\" schema=\"list\">" + keyTable + "</document>\n" +
            mapping.document("VcmsToDasMapping") + keys.document("KeyItems")));
    writeFile(directory / "Owned.xml", dxl(owned.document("OwnedItemMap")));
    writeFile(directory / "Absent.xml", dxl(absent.document("AbsentItemMap")));
    writeFile(directory / "CallFailingItems.xml",
              dxl("  <document name=\"CallFailingVcmsItems\" schema=\"list\"></document>\n"));
    writeFile(directory / "store.xml", storeCatalogue());
}

}  // namespace vireo::bench
