#include <gtest/gtest.h>

#include "messages/RpcAdapter.h"
#include "service/Method.h"

namespace vireo {
namespace {

Method sample() {
    Method method("setData", Method::eRequest);
    method.addIntParameter("number", Parameter::eIn, -5);
    method.addBoolParameter("flag", Parameter::eOut, true);
    method.addStringParameter("text", Parameter::eInOut, std::string("a\0b;", 4));
    method.addXMLParameter("xml", Parameter::eIn, "<a>1</a>");
    return method;
}

TEST(Method, GettersFindByNameTypeAndDirection) {
    const Method method = sample();
    EXPECT_EQ(method.getIntParameter("number", Parameter::eIn), -5);
    EXPECT_TRUE(method.getBoolParameter("flag", Parameter::eOut));
    // In/out serves readers of either direction, in serves a reader of in/out.
    EXPECT_EQ(method.getStringParameter("text", Parameter::eIn).size(), 4U);
    EXPECT_EQ(method.getStringParameter("text", Parameter::eOut).size(), 4U);
    EXPECT_EQ(method.getXMLParameter("xml", Parameter::eInOut), "<a>1</a>");
}

TEST(Method, AccessorsNameWhatIsWrong) {
    const Method method = sample();
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

TEST(RpcAdapter, RoundTripsEveryTypeAndDirection) {
    std::string text;
    RpcAdapter::encodeText(sample(), text);
    Method decoded;
    ASSERT_TRUE(RpcAdapter::decodeText(text, decoded));
    EXPECT_EQ(decoded.name(), "setData");
    ASSERT_EQ(decoded.parameters().size(), 4U);
    std::string again;
    RpcAdapter::encodeText(decoded, again);
    EXPECT_EQ(again, text);
}

TEST(RpcAdapter, WritesTheDocumentedBytes) {
    Method request("findSchemaName", Method::eRequest);
    request.addStringParameter("nodeId", Parameter::eInOut, "language");
    std::string text;
    RpcAdapter::encodeText(request, text);
    EXPECT_EQ(text, "14;findSchemaName0;1;6;nodeId1;2;8;language");
    Method reply("findSchemaName", Method::eResponse);
    reply.addStringParameter("schemaName", Parameter::eOut, "text");
    text.clear();
    RpcAdapter::encodeText(reply, text);
    EXPECT_EQ(text, "14;findSchemaName1;1;10;schemaName1;1;4;text");
}

TEST(RpcAdapter, RefusesEveryTruncationAndTrailingBytes) {
    std::string text;
    RpcAdapter::encodeText(sample(), text);
    Method untouched("keep", Method::eResponse);
    for (std::size_t length = 0; length < text.size(); ++length) {
        EXPECT_FALSE(RpcAdapter::decodeText(text.substr(0, length), untouched)) << length;
    }
    EXPECT_FALSE(RpcAdapter::decodeText(text + "x", untouched));
    for (const char* bad : {"1;a5;0;", "1;a0;-1;", "1;a0;1;1;p9;0;1;", "1;a0;1;1;p0;3;1;"}) {
        EXPECT_FALSE(RpcAdapter::decodeText(bad, untouched)) << bad;
    }
    EXPECT_EQ(untouched.name(), "keep");
}

}  // namespace
}  // namespace vireo
