#include <gtest/gtest.h>

#include <climits>

#include "service/Serializer.h"

namespace vireo {
namespace {

TEST(Serializer, WritesTheDocumentedForms) {
    std::string out;
    Serializer::serialize(out, -12);
    Serializer::serialize(out, true);
    Serializer::serialize(out, false);
    Serializer::serialize(out, "a;b");
    Serializer::serialize(out, std::list<std::string>{"", "x"});
    EXPECT_EQ(out, "-12;1;0;3;a;b2;0;1;x");
}

TEST(Serializer, ReadsBackWhatItWroteAndConsumesExactlyThat) {
    const std::string bytes("\0\x01;:\xff", 5);
    std::string text;
    Serializer::serialize(text, INT_MIN);
    Serializer::serialize(text, bytes);
    Serializer::serialize(text, std::list<std::string>{bytes, ""});
    Serializer::serialize(text, true);
    text += "rest";

    int number = 0;
    std::string string;
    std::list<std::string> list;
    bool flag = false;
    ASSERT_TRUE(Serializer::deserialize(text, number));
    ASSERT_TRUE(Serializer::deserialize(text, string));
    ASSERT_TRUE(Serializer::deserialize(text, list));
    ASSERT_TRUE(Serializer::deserialize(text, flag));
    EXPECT_EQ(number, INT_MIN);
    EXPECT_EQ(string, bytes);
    EXPECT_EQ(list, (std::list<std::string>{bytes, ""}));
    EXPECT_TRUE(flag);
    EXPECT_EQ(text, "rest");
}

TEST(Serializer, MalformedTextConsumesNothing) {
    for (const char* text : {"", ";", "12", "1.5;", "0x1;", "99999999999;", "-;", " 1;", "+1;"}) {
        std::string in = text;
        int value = 7;
        EXPECT_FALSE(Serializer::deserialize(in, value)) << text;
        EXPECT_EQ(in, text);
        EXPECT_EQ(value, 7);
    }
    for (const char* text : {"", "2;", "1", "true;", "-1;", "01;"}) {
        std::string in = text;
        bool value = true;
        EXPECT_FALSE(Serializer::deserialize(in, value)) << text;
        EXPECT_EQ(in, text);
    }
    for (const char* text : {"3;ab", "-1;a", "18446744073709551616;", "18446744073709551615;a"}) {
        std::string in = text;
        std::string value = "old";
        EXPECT_FALSE(Serializer::deserialize(in, value)) << text;
        EXPECT_EQ(in, text);
        EXPECT_EQ(value, "old");
    }
    for (const char* text : {"2;1;a", "4000000000;", "1;2;a"}) {
        std::string in = text;
        std::list<std::string> value{"old"};
        EXPECT_FALSE(Serializer::deserialize(in, value)) << text;
        EXPECT_EQ(in, text);
        EXPECT_EQ(value.size(), 1U);
    }
}

}  // namespace
}  // namespace vireo
