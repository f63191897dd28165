#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

#include "service/Serializer.h"
#include "snmp/SNMPQOSTrapDataItem.h"
#include "snmp/SNMPTrapData.h"
#include "snmp/SNMPVarbindTrapDataItem.h"

namespace vireo {
namespace {

using ::testing::ElementsAre;

SNMPTrapData trapOf(int number, std::unique_ptr<SNMPTrapDataItem> item) {
    SNMPTrapData trap;
    trap.setSpecificTrapNo(number);
    trap.addSNMPTrapDataItem(std::move(item));
    return trap;
}

/// Three varbinds, one of each kind, with the values that are hardest to carry.
std::unique_ptr<SNMPVarbindTrapDataItem> someVarbinds() {
    auto item = std::make_unique<SNMPVarbindTrapDataItem>();
    item->add({2, 1}, std::int32_t{INT_MIN});
    item->add({4294967295U}, std::uint32_t{4294967295U});
    item->add({2, 3, 0}, std::string("a;1:\0\xff", 6));
    return item;
}

/// As the text form of a report, with one value replaced.
std::string reportText(std::size_t row, const std::string& value, int count = 51) {
    std::string text = "6;1;3;qos";
    Serializer::serialize(text, count);
    for (std::size_t i = 1; i <= kQosTrapRows.size(); ++i) {
        Serializer::serialize(text, i == row ? value : "7");
    }
    return text;
}

TEST(SNMPTrapData, WritesTheDocumentedForm) {
    SNMPTrapData empty;
    empty.setSpecificTrapNo(6);
    EXPECT_EQ(empty.serialize(), "6;0;");
    EXPECT_EQ(trapOf(-1, someVarbinds()).serialize(),
              std::string("-1;1;8;varbinds9;3;2.11;i11;-2147483648"
                          "10;42949672951;g10;42949672955;2.3.01;s6;a;1:\0\xff",
                          86));
    SNMPTrapData report = trapOf(3, std::make_unique<SNMPQOSTrapDataItem>());
    EXPECT_TRUE(report.serialize().starts_with("3;1;3;qos51;1;01;0")) << report.serialize();
}

TEST(SNMPTrapData, SendsTheItemsInTheOrderInWhichTheyWereAdded) {
    SNMPTrapData trap = trapOf(0, someVarbinds());
    trap.addSNMPTrapDataItem(nullptr);
    trap.addSNMPTrapDataItem(std::make_unique<SNMPQOSTrapDataItem>());
    const std::vector<TrapVarbind> sent = trap.varbinds();
    ASSERT_EQ(sent.size(), 3 + kQosTrapRows.size());
    EXPECT_EQ(sent[0], TrapVarbind({2, 1}, std::int32_t{INT_MIN}));
    EXPECT_EQ(sent[0].kind(), TrapValueKind::eInteger32);
    EXPECT_EQ(sent[1].kind(), TrapValueKind::eGauge32);
    EXPECT_EQ(sent[2].kind(), TrapValueKind::eOctetString);
    EXPECT_THAT(sent[3].subIdentifiers, ElementsAre(1, 1, 1));
}

TEST(SNMPTrapData, ComesBackFromItsText) {
    SNMPTrapData trap = trapOf(INT_MAX, someVarbinds());
    auto report = std::make_unique<SNMPQOSTrapDataItem>();
    report->fields.jitterBufferThreshold = 4294967295U;
    report->setMACAddress("00:1a:e8:00:00:01");
    report->fields.callIdentifier = std::string(1000, 'x');
    trap.addSNMPTrapDataItem(std::move(report));

    SNMPTrapData back = trapOf(1, someVarbinds());
    ASSERT_TRUE(back.deserialize(trap.serialize()));
    EXPECT_EQ(back.specificTrapNo(), INT_MAX);
    EXPECT_EQ(back.varbinds(), trap.varbinds());
    EXPECT_EQ(back.serialize(), trap.serialize());
}

TEST(SNMPTrapData, MalformedTextChangesNothing) {
    std::string name = "1";
    for (std::size_t i = 0; i < SNMPVarbindTrapDataItem::kLongestName; ++i) {
        name += ".1";
    }
    std::string tooLong = "6;1;8;varbinds3;";
    Serializer::serialize(tooLong, name);
    tooLong += "1;i1;5";
    const std::vector<std::string> malformed = {
        "",
        "6;",
        "6;0",
        "x;0;",
        "4294967296;0;",
        "6;0;more",
        "6;-1;",
        "6;1;",
        "6;2147483647;",
        "6;1;4;trap0;",
        "6;1;8;varbinds",
        "6;1;8;varbinds-3;",
        "6;1;8;varbinds2;1;11;i",
        "6;1;8;varbinds3;1;11;i",
        "6;1;8;varbinds3;0;1;i1;5",
        "6;1;8;varbinds3;2;1.1;i1;5",
        "6;1;8;varbinds3;2;.11;i1;5",
        "6;1;8;varbinds3;4;1..11;i1;5",
        "6;1;8;varbinds3;2;-11;i1;5",
        "6;1;8;varbinds3;10;42949672961;i1;5",
        "6;1;8;varbinds3;1;11;x1;5",
        "6;1;8;varbinds3;1;11;i0;",
        "6;1;8;varbinds3;1;11;i10;2147483648",
        "6;1;8;varbinds3;1;11;g2;-1",
        "6;1;8;varbinds3;1;11;g10;4294967296",
        "6;1;8;varbinds3;1;11;g2;5 ",
        tooLong,
        reportText(1, "4294967296"),
        reportText(1, "-1"),
        reportText(1, ""),
        reportText(48, "12x"),
        reportText(0, "", 50),
        reportText(0, "", 52),
        reportText(0, "").substr(0, reportText(0, "").size() - 1),
    };
    for (const std::string& text : malformed) {
        SNMPTrapData trap = trapOf(9, someVarbinds());
        EXPECT_FALSE(trap.deserialize(text)) << text;
        EXPECT_EQ(trap.specificTrapNo(), 9) << text;
        EXPECT_EQ(trap.varbinds(), trapOf(9, someVarbinds()).varbinds()) << text;
    }
    SNMPTrapData trap;
    EXPECT_TRUE(trap.deserialize(reportText(0, "")));
    EXPECT_TRUE(trap.deserialize(reportText(50, "12x"))) << "a text may be any text";
}

}  // namespace
}  // namespace vireo
