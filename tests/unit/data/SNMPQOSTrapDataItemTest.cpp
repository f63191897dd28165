#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

#include "snmp/SNMPQOSTrapDataItem.h"

namespace vireo {
namespace {

std::vector<TrapVarbind> varbindsOf(const SNMPQOSTrapDataItem& item) {
    std::vector<TrapVarbind> varbinds;
    item.appendVarbinds(varbinds);
    return varbinds;
}

/// All that the groups of `pattern` capture in a file, in order.
std::vector<std::string> captured(const std::string& fileName, const std::string& pattern) {
    std::ifstream file(fileName);
    std::stringstream content;
    content << file.rdbuf();
    const std::string text = content.str();
    const std::regex expression(pattern);
    std::vector<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
         ++match) {
        std::copy_if(std::next(match->begin()), match->end(), std::back_inserter(found),
                     [](const auto& group) { return group.matched; });
    }
    return found;
}

// That the sample phone has their items, and each its own field, is seen in what the phone reports.
TEST(QosTrapRows, AreTheObjectsOfTheMib) {
    const std::string object =
        R"re(SYNTAX      (Gauge32|VireoText)|\((qdc-[a-z-]+)\)"|qdcReportFields (\d+) )re";
    const std::string file = VIREO_MIBS "/VIREO-PHONE-MIB.txt";
    std::vector<std::string> expected;
    for (const QosTrapRow& row : kQosTrapRows) {
        expected.emplace_back(row.isText() ? "VireoText" : "Gauge32");
        expected.emplace_back(row.tag);
        expected.push_back(std::to_string(expected.size() / 3 + 1));
    }
    EXPECT_EQ(captured(file, object), expected);
}

TEST(QosTrapRows, AreTheTableOfTheGuideWithTheNamesOfTheMib) {
    const auto names = captured(VIREO_MIBS "/VIREO-PHONE-MIB.txt", "(qdc\\w+) OBJECT-TYPE");
    ASSERT_EQ(names.size(), kQosTrapRows.size());
    std::vector<std::string> expected;
    for (std::size_t i = 0; i < kQosTrapRows.size(); ++i) {
        const QosTrapRow& row = kQosTrapRows[i];
        expected.push_back(std::to_string(i + 1));
        expected.push_back(names[i]);
        expected.emplace_back(row.isText() ? "OCTET STRING" : "Gauge32");
        expected.emplace_back(row.source == QosFieldSource::eItem ? "item" : "part");
        expected.emplace_back(row.tag);
    }
    EXPECT_EQ(
        captured(VIREO_DOCS "/traps.md",
                 R"re(\| (\d+) \| `(\w+)` \| ([A-Za-z0-9 ]+) \| (item|part) `([a-z-]+)` \|)re"),
        expected);
}

TEST(SNMPQOSTrapDataItem, CutsLongTextsWhereACharacterEnds) {
    const std::string sample = std::string(254, 'a');
    const struct {
        std::string text;
        std::string sent;
    } rows[] = {
        {sample + "b", sample + "b"},
        {sample + "bc", sample + "b"},
        {sample + "\xc3\xa4", sample},
        {sample.substr(0, 253) + "\xc3\xa4!", sample.substr(0, 253) + "\xc3\xa4"},
        {std::string(300, '\xff'), std::string(255, '\xff')},
    };
    for (const auto& row : rows) {
        SNMPQOSTrapDataItem item;
        item.fields.callIdentifier = row.text;
        EXPECT_EQ(varbindsOf(item)[49].value, TrapValue(row.sent));
    }
}

}  // namespace
}  // namespace vireo
