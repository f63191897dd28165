#include <gtest/gtest.h>

#include "service/Method.h"

namespace vireo {
namespace {

TEST(Method, AccessorsNameWhatIsWrong) {
    Method method("setData", Method::eRequest);
    method.addIntParameter("number", Parameter::eIn, -5);
    method.addBoolParameter("flag", Parameter::eOut, true);
    const auto messageOf = [](auto&& call) -> std::string {
        try {
            call();
        } catch (const MethodError& error) {
            return error.what();
        }
        return "";
    };
    EXPECT_EQ(messageOf([&] { method.getIntParameter("absent", Parameter::eIn); }),
              "method \"setData\": parameter \"absent\" is missing");
    EXPECT_EQ(messageOf([&] { method.getStringParameter("number", Parameter::eIn); }),
              "method \"setData\": parameter \"number\" is int in direction 0, wanted string in "
              "direction 0");
    EXPECT_NE(messageOf([&] { method.getBoolParameter("flag", Parameter::eIn); }), "");
    EXPECT_NE(messageOf([&] { method.getIntParameter("number", Parameter::eOut); }), "");
}

}  // namespace
}  // namespace vireo
