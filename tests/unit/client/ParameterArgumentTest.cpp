#include <gtest/gtest.h>

#include <string>

#include "ParameterArgument.h"

namespace vireo {
namespace {

using Type = Parameter::types;

TEST(ParameterArgument, ReadsNameTypeAndValue) {
    const struct {
        const char* argument;
        const char* name;
        Type type;
        Parameter::directions direction;
        int number;
        const char* text;
    } rows[] = {
        {"n:int=0", "n", Type::eInt, Parameter::eIn, 0, ""},
        {"n:int=-2147483648", "n", Type::eInt, Parameter::eIn, -2147483647 - 1, ""},
        {"n:int=2147483647", "n", Type::eInt, Parameter::eIn, 2147483647, ""},
        {"b:bool=true", "b", Type::eBool, Parameter::eIn, 1, ""},
        {"b:bool=1", "b", Type::eBool, Parameter::eIn, 1, ""},
        {"b:bool=false", "b", Type::eBool, Parameter::eIn, 0, ""},
        {"b:bool=0", "b", Type::eBool, Parameter::eIn, 0, ""},
        {"s:string=", "s", Type::eString, Parameter::eInOut, 0, ""},
        {"s:string=a:int=7 ", "s", Type::eString, Parameter::eInOut, 0, "a:int=7 "},
        {"x:xml=<a b=\"1\"/>", "x", Type::eXML, Parameter::eInOut, 0, "<a b=\"1\"/>"},
    };
    for (const auto& row : rows) {
        std::string error;
        const auto parameter = ParameterArgument::parse(row.argument, error);
        ASSERT_TRUE(parameter) << error;
        EXPECT_EQ(parameter->name, row.name) << row.argument;
        EXPECT_EQ(parameter->type, row.type) << row.argument;
        EXPECT_EQ(parameter->direction, row.direction) << row.argument;
        EXPECT_EQ(parameter->number, row.number) << row.argument;
        EXPECT_EQ(parameter->text, row.text) << row.argument;
    }
}

TEST(ParameterArgument, NamesTheArgumentAndWhatIsWrongWithIt) {
    const struct {
        const char* argument;
        const char* error;
    } rows[] = {
        {"", "'' is not NAME:TYPE=VALUE"},
        {"n", "'n' is not NAME:TYPE=VALUE"},
        {"n=1", "'n=1' is not NAME:TYPE=VALUE"},
        {"n:int", "'n:int' is not NAME:TYPE=VALUE"},
        {":int=1", "':int=1' is not NAME:TYPE=VALUE"},
        {"n=a:int=1", "'n=a:int=1' is not NAME:TYPE=VALUE"},
        {"n:=1", "'n:=1': '' is not a type (int, bool, string or xml)"},
        {"n:Int=1", "'n:Int=1': 'Int' is not a type (int, bool, string or xml)"},
        {"n:int=", "'n:int=': '' is not a whole number"},
        {"n:int=12x", "'n:int=12x': '12x' is not a whole number"},
        {"n:int= 1", "'n:int= 1': ' 1' is not a whole number"},
        {"n:int=0x10", "'n:int=0x10': '0x10' is not a whole number"},
        {"n:int=2147483648", "'n:int=2147483648': '2147483648' is out of the range of an int"},
        {"b:bool=yes", "'b:bool=yes': 'yes' is not true, false, 1 or 0"},
        {"b:bool=", "'b:bool=': '' is not true, false, 1 or 0"},
    };
    for (const auto& row : rows) {
        std::string error;
        EXPECT_FALSE(ParameterArgument::parse(row.argument, error)) << row.argument;
        EXPECT_EQ(error, row.error);
    }
}

}  // namespace
}  // namespace vireo
