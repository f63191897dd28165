#include "unit/service/ServiceHouse.h"

namespace vireo::test {
namespace {

class LocalMgmtInvokerTest : public ServiceHouse {
protected:
    LocalMgmtInvokerTest() { start(); }

    static Method recordRequest(const char* name, const std::string& text) {
        Method request(name, Method::eRequest);
        request.addStringParameter("manageableData", Parameter::eInOut, text);
        return request;
    }
    static Method textRequest(const char* name, const char* parameter, const char* value) {
        Method request(name, Method::eRequest);
        request.addStringParameter(parameter, Parameter::eIn, value);
        return request;
    }
};

TEST_F(LocalMgmtInvokerTest, WhatCouldNotBeReadBackIsNotWritten) {
    const auto isRefused = [this](const char* method, const ManageableData& record,
                                  const char* reason) {
        const Method reply = call(recordRequest(method, record.serialize()));
        ManageableData answer;
        EXPECT_TRUE(
            answer.deserialize(reply.getStringParameter("manageableData", Parameter::eOut)));
        return !reply.getBoolParameter("result", Parameter::eOut) &&
               answer.rejections().size() == 1 && answer.rejections()[0].reason() == reason;
    };
    EXPECT_TRUE(
        isRefused("setData", recordOf({"melody=" + std::string(300000, '>')}), "Invalid data"));
    std::string value;
    EXPECT_TRUE(service.getData("melody", value));
    EXPECT_EQ(value, "7");

    // What comes back beside the value counts as well.
    ManageableData longSchema = recordOf({"melody=short"});
    longSchema.putSchema(std::make_shared<const DxlSchema>(
        std::make_shared<DxlNode>("q", DxlNode::Kind::eLeaf, std::string(900000, '>'))));
    EXPECT_TRUE(isRefused("setData", longSchema, "Invalid data"));

    ManageableData everything;
    for (const char* tag : {"melody", "volume", "lazy", "plain", "key-1", "key-2", "lazy-2",
                            "software-type", "guarded"}) {
        const ManageableData longest = recordOf({tag + ("=" + std::string(500000, 'x'))});
        EXPECT_TRUE(call(recordRequest("setData", longest.serialize()))
                        .getBoolParameter("result", Parameter::eOut));
        everything.addRootId(tag, nullptr);
    }
    EXPECT_TRUE(isRefused("getData", everything, "Request failed"));
}

TEST_F(LocalMgmtInvokerTest, AnswersSchemaQuestions) {
    Method reply = call(textRequest("exportSchema", "schemaName", "account"));
    EXPECT_EQ(reply.getStringParameter("schemaXml", Parameter::eOut),
              R"(<schema name="account"><data name="user" type="string"></data>)"
              R"(<data name="realm" type="string"></data></schema>)");
    reply = call(textRequest("exportSchema", "schemaName", "unknown"));
    EXPECT_EQ(reply.getStringParameter("schemaXml", Parameter::eOut), "");

    reply = call(textRequest("getSchema", "schemaName", "preset"));
    EXPECT_TRUE(reply.getBoolParameter("result", Parameter::eOut));
    ManageableData record;
    ASSERT_TRUE(record.deserialize(reply.getStringParameter("manageableData", Parameter::eOut)));
    EXPECT_TRUE(record.getSchema("preset"));
    reply = call(textRequest("getSchema", "schemaName", "unknown"));
    EXPECT_FALSE(reply.getBoolParameter("result", Parameter::eOut));
    EXPECT_EQ(reply.getStringParameter("manageableData", Parameter::eOut),
              ManageableData().serialize());
}

TEST_F(LocalMgmtInvokerTest, AnswersTheLimitsOfFileTypes) {
    const struct {
        const char* type;
        int count;
        int name;
    } cases[] = {{"images", 20, 15}, {"midlets", -1, 15}, {"swBind", 0, 0},
                 {"ringer", 0, 0},   {"Images", 0, 0},    {"", 0, 0}};
    for (const auto& [type, count, name] : cases) {
        SCOPED_TRACE(type);
        Method reply = call(textRequest("getFileTypeCountLimit", "FileType", type));
        EXPECT_EQ(reply.getIntParameter("getFileTypeCountLimit", Parameter::eOut), count);
        reply = call(textRequest("getFileTypeNameLimit", "FileType", type));
        EXPECT_EQ(reply.getIntParameter("getFileTypeNameLimit", Parameter::eOut), name);
        reply = call(textRequest("getFileTypeMetadata", "FileType", type));
        EXPECT_EQ(reply.getStringParameter("FileTypeMetadata", Parameter::eOut),
                  std::to_string(count) + ";" + std::to_string(name) + ";");
    }
    EXPECT_EQ(service.getFileTypeCountLimit(static_cast<LocalMgmtIfc::eFiletype>(-1)), 0);
    EXPECT_EQ(service.getFileTypeNameLimit(static_cast<LocalMgmtIfc::eFiletype>(19)), 0);
    EXPECT_EQ(service.getFileTypeMetadata(LocalMgmtIfc::FILETYPE_PICTURE), "");
}

TEST_F(LocalMgmtInvokerTest, WhateverIsWrongGetsOneEmptyReplyAndItsLine) {
    std::string good;
    RpcAdapter::encodeText(Method("invalidateVCMSCache", Method::eRequest), good);
    Executable stranger;
    ports.forgetLines();

    EXPECT_EQ(send(nullptr, good), "");
    EXPECT_EQ(send(&stranger, good), "");
    EXPECT_EQ(ports.count(kLogError, "Could not cast executable to LocalMgmtIfc."), 2);
    EXPECT_EQ(send(&service, good, "vireo_text"), "");
    EXPECT_EQ(ports.count(kLogError, "Could not find PA for \"vireo_text\"\n"), 1);
    EXPECT_EQ(send(&service, good, "throwing"), "");
    EXPECT_EQ(ports.count(kLogError, "unknown exception\n"), 1);
    for (const std::string& garbage :
         {std::string(), std::string("\0\xff", 2), good + "x", std::string(1U << 20U, '9')}) {
        EXPECT_EQ(send(&service, garbage), "");
    }
    EXPECT_EQ(ports.count(kLogDebug, "Invalid Message, "), 4);
    EXPECT_EQ(call(Method("SetData", Method::eRequest)).name(), "");
    EXPECT_EQ(ports.count(kLogDebug, "Invalid Message, SetData"), 1);
    EXPECT_EQ(call(Method("setData", Method::eRequest)).name(), "");
    EXPECT_EQ(
        ports.count(kLogError, "method \"setData\": parameter \"manageableData\" is missing\n"), 1);
    EXPECT_EQ(call(textRequest("exportSchema", "schemaname", "x")).name(), "");
    EXPECT_NE(send(&service, good), "") << "the next message is served";
}

TEST_F(LocalMgmtInvokerTest, LogsExactlyTheBytesOfTheMessage) {
    const std::string bytes = "abc|not this";
    TestResponse response("none");
    invoker.handleMessage(&service, bytes.data(), 3, &response);
    EXPECT_EQ(ports.count(kLogInfo, "invoker initialised"), 1);
    EXPECT_EQ(ports.lines(kLogInfo).back(), "handleMessage:msg = abc");
}

}  // namespace
}  // namespace vireo::test
