#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

#include "snmp/SNMPQOSTrapDataItem.h"

namespace vireo {
namespace {

using ::testing::ElementsAre;

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

std::vector<std::string> tagsFrom(QosFieldSource source) {
    std::vector<std::string> tags;
    for (const QosTrapRow& row : kQosTrapRows) {
        if (row.source == source) {
            tags.emplace_back(row.tag);
        }
    }
    return tags;
}

TEST(QosTrapRows, ReadTheItemsAndNodesOfTheSamplePhoneInTheirOrder) {
    const auto thresholds = captured(VIREO_CONFIG "/TrapItems.xml",
                                     "<rootId>(qdc-[^<]+)</rootId><schema>number</schema>");
    EXPECT_EQ(tagsFrom(QosFieldSource::eItem), thresholds);

    auto nodes = captured(VIREO_CONFIG "/MediaItems.xml", "<data name=\"(qdc-[^\"]+)\"");
    ASSERT_FALSE(nodes.empty());
    EXPECT_EQ(nodes.front(), QosStatistics::QDC_SPECIFIC_TRAP_TYPE);
    nodes.erase(nodes.begin());
    EXPECT_EQ(tagsFrom(QosFieldSource::eStatistics), nodes);
}

TEST(QosTrapRows, TenTextsAndNoFieldTwice) {
    std::vector<std::size_t> texts;
    QosTrapFields fields;
    std::set<const void*> places;
    for (std::size_t i = 0; i < kQosTrapRows.size(); ++i) {
        const QosTrapRow& row = kQosTrapRows[i];
        ASSERT_NE(row.number == nullptr, row.text == nullptr) << row.tag;
        if (row.isText()) {
            texts.push_back(i + 1);
            places.insert(&(fields.*row.text));
        } else {
            places.insert(&(fields.*row.number));
        }
    }
    EXPECT_EQ(places.size(), 51U);
    EXPECT_THAT(texts, ElementsAre(17, 19, 35, 37, 43, 46, 47, 49, 50, 51));
}

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

TEST(SNMPQOSTrapDataItem, NamesEachVarbindByItsRow) {
    SNMPQOSTrapDataItem item;
    item.fields.jitterBufferThreshold = 80;
    item.fields.ssrcReceived = 4294967295U;
    item.setLocalIPAddress("192.0.2.7");
    item.setRemoteIPAddress("2001:db8::9");
    item.setConsecutivePacketLoss("5,1,0");
    item.setConsecutiveGoodPackets("90,7");
    item.setMACAddress("00-1a");
    const auto varbinds = varbindsOf(item);
    ASSERT_EQ(varbinds.size(), 51U);
    for (std::uint32_t row = 1; row <= 51; ++row) {
        EXPECT_THAT(varbinds[row - 1].subIdentifiers, ElementsAre(1, 1, row));
    }
    EXPECT_EQ(varbinds[0].value, TrapValue(std::uint32_t{80}));
    EXPECT_EQ(varbinds[16].value, TrapValue("192.0.2.7"));
    EXPECT_EQ(varbinds[18].value, TrapValue("2001:db8::9"));
    EXPECT_EQ(varbinds[20].value, TrapValue(std::uint32_t{4294967295U}));
    EXPECT_EQ(varbinds[34].value, TrapValue("5,1,0"));
    EXPECT_EQ(varbinds[36].value, TrapValue("90,7"));
    EXPECT_EQ(varbinds[42].value, TrapValue("")) << "what is not set is empty, not left out";
    EXPECT_EQ(varbinds[43].value, TrapValue(std::uint32_t{0}));
    EXPECT_EQ(varbinds[50].value, TrapValue("00-1a"));
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
