#include <gtest/gtest.h>

#include <climits>

#include "service/Serializer.h"
#include "snmp/SNMPQOSTrapDataItem.h"
#include "snmp/SNMPTrapData.h"
#include "snmp/SNMPVarbindTrapDataItem.h"

namespace vireo {
namespace {

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

TEST(SNMPTrapData, KeepsItsItemsInTheirOrderAndComesBackFromItsText) {
    SNMPTrapData trap = trapOf(INT_MAX, someVarbinds());
    auto report = std::make_unique<SNMPQOSTrapDataItem>();
    report->fields.jitterBufferThreshold = 4294967295U;
    report->setMACAddress("00:1a:e8:00:00:01");
    report->fields.callIdentifier = std::string(1000, 'x');
    trap.addSNMPTrapDataItem(nullptr);
    trap.addSNMPTrapDataItem(std::move(report));
    const std::vector<TrapVarbind> sent = trap.varbinds();
    ASSERT_EQ(sent.size(), 3 + kQosTrapRows.size());
    EXPECT_EQ(sent[0], TrapVarbind({2, 1}, std::int32_t{INT_MIN})) << "the first that was added";

    SNMPTrapData back = trapOf(1, someVarbinds());
    ASSERT_TRUE(back.deserialize(trap.serialize()));
    EXPECT_EQ(back.specificTrapNo(), INT_MAX);
    EXPECT_EQ(back.varbinds(), sent);
    EXPECT_EQ(back.serialize(), trap.serialize());
}

/// The text of a trap with one varbind of these parts.
std::string varbindText(const std::string& name, const char* kind, const char* value) {
    std::string text = "6;1;8;varbinds3;";
    Serializer::serialize(text, name);
    Serializer::serialize(text, kind);
    Serializer::serialize(text, value);
    return text;
}

TEST(SNMPTrapData, MalformedTextChangesNothing) {
    std::vector<std::string> malformed = {
        "",
        "6;",
        "x;0;",
        "6;0;more",
        "6;-1;",
        "6;2147483647;",
        "6;1;4;trap0;",
        "6;1;8;varbinds",
        "6;1;8;varbinds-3;",
        "6;1;8;varbinds2;1;11;i",
        "6;1;8;varbinds3;1;11;i",
        varbindText("1", "x", "5"),
        varbindText("1", "i", ""),
        varbindText("1", "i", "2147483648"),
        varbindText("1", "g", "-1"),
        varbindText("1", "g", "4294967296"),
        varbindText("1", "g", "5 "),
        reportText(1, "4294967296"),
        reportText(1, "-1"),
        reportText(1, ""),
        reportText(48, "12x"),
        reportText(0, "", 50),
        reportText(0, "", 52),
        reportText(0, "").substr(0, reportText(0, "").size() - 1)};
    std::string tooLong = "1";
    for (std::size_t i = 0; i < SNMPVarbindTrapDataItem::kLongestName; ++i) {
        tooLong += ".1";
    }
    for (const std::string& name :
         std::vector<std::string>{"", "1.", ".1", "1..1", "-1", "4294967296", tooLong}) {
        malformed.push_back(varbindText(name, "i", "5"));
    }
    for (const std::string& text : malformed) {
        SNMPTrapData trap = trapOf(9, someVarbinds());
        EXPECT_FALSE(trap.deserialize(text)) << text;
        EXPECT_EQ(trap.specificTrapNo(), 9) << text;
        EXPECT_EQ(trap.varbinds(), trapOf(9, someVarbinds()).varbinds()) << text;
    }
    SNMPTrapData trap;
    EXPECT_TRUE(trap.deserialize(varbindText("1", "i", "5")));
    EXPECT_TRUE(trap.deserialize(reportText(0, "")));
    EXPECT_TRUE(trap.deserialize(reportText(50, "12x"))) << "a text may be any text";
}

}  // namespace
}  // namespace vireo
