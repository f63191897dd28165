#include <gtest/gtest.h>

#include "NodeId.h"
#include "items/DasResponseParser.h"

namespace vireo {
namespace {

std::string valueOf(const DasResponseParser& parser, const std::string& name) {
    std::string value = "(absent)";
    parser.getItemValue(name, value);
    return value;
}

TEST(DasResponseParser, TakesTheTextOfEveryElementButTheSchema) {
    DasResponseParser parser;
    ASSERT_TRUE(parser.parseXmlResponse(
        "<Schema name=\"T\"><ReasonForMessage>read_response</ReasonForMessage>"
        "<A>1 &lt;&#13;</A><B/><A>2</A></Schema>"));
    EXPECT_EQ(parser.schemaName(), "T");
    EXPECT_EQ(valueOf(parser, "A"), "2") << "a later one of the same name replaces";
    EXPECT_EQ(valueOf(parser, "B"), "");
    EXPECT_EQ(valueOf(parser, "Schema"), "(absent)");
    EXPECT_EQ(valueOf(parser, "C"), "(absent)");
}

TEST(DasResponseParser, OfNestedElementsKeepsTheTextSinceTheLastStart) {
    DasResponseParser parser;
    ASSERT_TRUE(parser.parseXmlResponse("<Schema><A>before<B>in</B>after</A></Schema>"));
    EXPECT_EQ(valueOf(parser, "B"), "in");
    EXPECT_EQ(valueOf(parser, "A"), "inafter");
}

TEST(DasResponseParser, ForgetsTheAnswerBefore) {
    DasResponseParser parser;
    ASSERT_TRUE(parser.parseXmlResponse("<Schema name=\"T\"><A>1</A></Schema>"));
    for (const char* malformed : {"", "<Schema>", "<Schema><A>1</B></Schema>", "text"}) {
        EXPECT_FALSE(parser.parseXmlResponse(malformed)) << malformed;
        EXPECT_EQ(valueOf(parser, "B"), "(absent)");
        EXPECT_EQ(parser.schemaName(), "");
    }
}

TEST(NodeId, IsOrderedByItemThenByNodeByteByByte) {
    const NodeId ordered[] = {{"", "z"},   {"a", "a"},   {"a", "b"},
                              {"ab", "z"}, {"abc", "a"}, {"\xc3\xa4", ""}};
    for (std::size_t i = 0; i + 1 < std::size(ordered); ++i) {
        EXPECT_TRUE(ordered[i] < ordered[i + 1]) << i;
        EXPECT_FALSE(ordered[i + 1] < ordered[i]) << i;
    }
}

}  // namespace
}  // namespace vireo
