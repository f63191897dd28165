#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "Assignment.h"
#include "BusyMask.h"
#include "ParameterArgument.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

TEST(Assignment, SplitsAtTheFirstEqualsSignAndTakesTheRestLiterally) {
    const struct {
        std::vector<std::string> arguments;
        const char* tag;  // of the first one
        const char* value;
        const char* error;
    } rows[] = {
        {{"formula=a=b==c"}, "formula", "a=b==c", ""},
        {{"banner=", "melody=3"}, "banner", "", ""},
        {{"banner= two  blanks "}, "banner", " two  blanks ", ""},
        {{"a=1", "volume"}, "", "", "'volume' is not TAG=VALUE"},
        {{"=1"}, "", "", "'=1' is not TAG=VALUE"},
        {{""}, "", "", "'' is not TAG=VALUE"},
        {{"a=1", "b=2", "a=3"}, "", "", "'a' is given twice"},
    };
    for (const auto& row : rows) {
        std::string error;
        const auto assignments = Assignment::parseAll(row.arguments, error);
        EXPECT_EQ(error, row.error);
        ASSERT_EQ(assignments.has_value(), error.empty());
        if (assignments) {
            EXPECT_EQ(assignments->size(), row.arguments.size());
            EXPECT_EQ(assignments->front().tag, row.tag);
            EXPECT_EQ(assignments->front().value, row.value);
        }
    }
}

TEST(ParameterArgument, IsSentAsItsTypeSaysOrTheErrorNamesIt) {
    const struct {
        const char* argument;
        const char* sent;  // name, type, direction and value
        const char* error;
    } rows[] = {
        {"n:int=0", "1;n0;0;0;", ""},
        {"n:int=-2147483648", "1;n0;0;-2147483648;", ""},
        {"n:int=2147483647", "1;n0;0;2147483647;", ""},
        {"b:bool=true", "1;b2;0;1;", ""},
        {"b:bool=1", "1;b2;0;1;", ""},
        {"b:bool=false", "1;b2;0;0;", ""},
        {"b:bool=0", "1;b2;0;0;", ""},
        {"s:string=", "1;s1;2;0;", ""},
        {"s:string=a:int=7 ", "1;s1;2;8;a:int=7 ", ""},
        {"x:xml=<a b=\"1\"/>", "1;x3;2;10;<a b=\"1\"/>", ""},
        {"", "", "'' is not NAME:TYPE=VALUE"},
        {"n=1", "", "'n=1' is not NAME:TYPE=VALUE"},
        {"n:int", "", "'n:int' is not NAME:TYPE=VALUE"},
        {":int=1", "", "':int=1' is not NAME:TYPE=VALUE"},
        {"n=a:int=1", "", "'n=a:int=1' is not NAME:TYPE=VALUE"},
        {"n:=1", "", "'n:=1': '' is not a type (int, bool, string or xml)"},
        {"n:Int=1", "", "'n:Int=1': 'Int' is not a type (int, bool, string or xml)"},
        {"n:int=", "", "'n:int=': '' is not a whole number"},
        {"n:int=12x", "", "'n:int=12x': '12x' is not a whole number"},
        {"n:int= 1", "", "'n:int= 1': ' 1' is not a whole number"},
        {"n:int=2147483648", "", "'n:int=2147483648': '2147483648' is out of the range of an int"},
        {"b:bool=yes", "", "'b:bool=yes': 'yes' is not true, false, 1 or 0"},
        {"b:bool=", "", "'b:bool=': '' is not true, false, 1 or 0"},
    };
    for (const auto& row : rows) {
        std::string error;
        const auto parameter = ParameterArgument::parse(row.argument, error);
        EXPECT_EQ(error, row.error);
        ASSERT_EQ(parameter.has_value(), error.empty()) << row.argument;
        if (parameter) {
            Method method("m", Method::eRequest);
            method.addParameter(*parameter);
            EXPECT_EQ(encoded(method), std::string("1;m0;1;") + row.sent) << row.argument;
        }
    }
}

TEST(BusyMask, ReadsWhatAPersonTypesAndNothingElse) {
    const struct {
        const char* argument;
        std::optional<unsigned> mask;
    } rows[] = {
        {"0", 0U},           {"513", 513U},       {"0x201", 513U},    {"0XfF", 255U},
        {"4294967295", ~0U}, {"0xFFFFFFFF", ~0U}, {"", std::nullopt}, {"4294967296", {}},
        {"0x100000000", {}}, {"0x", {}},          {"-1", {}},         {"+1", {}},
        {" 1", {}},          {"1 ", {}},          {"f", {}},
    };
    for (const auto& row : rows) {
        std::string error;
        EXPECT_EQ(BusyMask::parse(row.argument, error), row.mask) << row.argument;
        EXPECT_EQ(error.empty(), row.mask.has_value()) << error;
    }
}

}  // namespace
}  // namespace vireo
