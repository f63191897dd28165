#include <gtest/gtest.h>

#include <climits>

#include "service/Serializer.h"

namespace vireo {
namespace {

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

/// None of the texts is a value of this type: nothing is taken of them, and `old` stays.
template <class Value>
void expectRefused(std::initializer_list<const char*> texts, const Value& old) {
    for (const char* text : texts) {
        std::string in = text;
        Value value = old;
        EXPECT_FALSE(Serializer::deserialize(in, value)) << text;
        EXPECT_EQ(in, text);
        EXPECT_EQ(value, old) << text;
    }
}

TEST(Serializer, MalformedTextConsumesNothing) {
    expectRefused({"", ";", "12", "1.5;", "0x1;", "99999999999;", "-;", " 1;", "+1;"}, 7);
    expectRefused({"", "2;", "1", "true;", "-1;", "01;"}, true);
    expectRefused({"3;ab", "-1;a", "18446744073709551616;", "18446744073709551615;a"},
                  std::string("old"));
    expectRefused({"2;1;a", "4000000000;", "1;2;a"}, std::list<std::string>{"old"});
}

}  // namespace
}  // namespace vireo
