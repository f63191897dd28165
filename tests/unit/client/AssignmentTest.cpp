#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Assignment.h"

namespace vireo {
namespace {

TEST(Assignment, SplitsAtTheFirstEqualsSignAndTakesTheRestLiterally) {
    const struct {
        const char* argument;
        const char* tag;
        const char* value;
    } rows[] = {
        {"ringer-melody=3", "ringer-melody", "3"},
        {"formula=a=b==c", "formula", "a=b==c"},
        {"banner=", "banner", ""},
        {"banner= two  blanks ", "banner", " two  blanks "},
        {"banner=@file", "banner", "@file"},
        {"*=x", "*", "x"},
    };
    for (const auto& row : rows) {
        std::string error;
        const auto assignment = Assignment::parse(row.argument, error);
        ASSERT_TRUE(assignment) << error;
        EXPECT_EQ(assignment->tag, row.tag);
        EXPECT_EQ(assignment->value, row.value);
    }
}

TEST(Assignment, NamesTheArgumentThatIsWrong) {
    const struct {
        std::vector<std::string> arguments;
        const char* error;
    } rows[] = {
        {{"a=1", "volume"}, "'volume' is not TAG=VALUE"},
        {{"=1"}, "'=1' is not TAG=VALUE"},
        {{""}, "'' is not TAG=VALUE"},
        {{"a=1", "b=2", "a=3"}, "'a' is given twice"},
    };
    for (const auto& row : rows) {
        std::string error;
        EXPECT_FALSE(Assignment::parseAll(row.arguments, error));
        EXPECT_EQ(error, row.error);
    }
}

}  // namespace
}  // namespace vireo
