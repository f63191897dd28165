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

TEST(DasResponseParser, ForgetsTheAnswerBefore) {
    DasResponseParser parser;
    ASSERT_TRUE(parser.parseXmlResponse("<Schema name=\"T\"><A>1</A></Schema>"));
    EXPECT_EQ(valueOf(parser, "Schema"), "(absent)");
    for (const char* malformed : {"", "<Schema>", "<Schema><A>1</B></Schema>", "text"}) {
        EXPECT_FALSE(parser.parseXmlResponse(malformed)) << malformed;
        EXPECT_EQ(valueOf(parser, "B"), "(absent)");
        EXPECT_EQ(parser.schemaName(), "");
    }
}

TEST(DasResponseParser, ReadsPlainAndOtherAnswersAlike) {
    const std::string head = R"(<?xml version="1.0" encoding="utf-8"?><Schema name="T">)";
    const struct {
        const char* content;
        const char* value;  // null: malformed
    } answers[] = {
        {"<A>plain</A></Schema>", "plain"},
        {"<A></A></Schema>", ""},
        {"<A>1</A><A>2</A></Schema>", "2"},
        {"<A> ]] \"'</A></Schema>", " ]] \"'"},
        {"<A>1</A><B>2</B><C>3</C><D>4</D></Schema>", "1"},
        {"<B>2</B><C>3</C><D>4</D><E>5</E><A>1</A></Schema>", "1"},
        {"<A>\xef\xbf\xbf</A></Schema>", nullptr},
        {"<A>\x7f\t\n</A></Schema>", "\x7f\t\n"},
        {"<A>a&amp;b &lt;&#13;</A></Schema>", "a&b <\r"},
        {"<A>\xc3\xa4</A></Schema>", "\xc3\xa4"},
        {"<A>two\r\nlines</A></Schema>", "two\nlines"},
        {"<A x=\"1\">1</A ></Schema>\n", "1"},
        // Of nested elements the text since the last start.
        {"<A>before<B>in</B>after</A></Schema>", "inafter"},
        {"<B>before<A>in</A>after</B></Schema>", "in"},
        {"<A><!-- --><![CDATA[<]]></A></Schema>", "<"},
        {"<Schema><A>1</A></Schema></Schema>", "1"},
        {"</Schema>", "(absent)"},
        {"", nullptr},
        {"<A>1</A>", nullptr},
        {"<A>1</B></Schema>", nullptr},
        {"<A>1</A></Schema><A>2</A>", nullptr},
        {"<A>]]></A></Schema>", nullptr},
        {"<A>\x01</A></Schema>", nullptr},
        {"<A>\xff</A></Schema>", nullptr},
        {"<1>1</1></Schema>", nullptr},
        {"<A>1</Ab></Schema>", nullptr},
        {"<Ab>1</A></Schema>", nullptr},
    };
    for (const auto& answer : answers) {
        DasResponseParser parser;
        const bool isGood = parser.parseXmlResponse(head + answer.content);
        EXPECT_EQ(isGood, answer.value != nullptr) << answer.content;
        if (isGood && answer.value != nullptr) {
            EXPECT_EQ(valueOf(parser, "A"), answer.value) << answer.content;
            EXPECT_EQ(parser.schemaName(), "T") << answer.content;
        }
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
