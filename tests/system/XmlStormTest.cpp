#include <vector>

#include "StormPeer.h"
#include "messages/ServiceXmlAdapter.h"

namespace vireo::test {
namespace {

constexpr const char* kXml = VireoProtocols::SERVICE_XML;
constexpr const char* kQuestion =
    R"(<request name="findSchemaName"><param name="nodeId" type="string" dir="0">ringer-melody)"
    "</param></request>";

std::string nested(int levels) {
    std::string text;
    for (int i = 0; i < levels; ++i) {
        text += "<n>";
    }
    for (int i = 0; i < levels; ++i) {
        text += "</n>";
    }
    return text;
}

class XmlStorm : public ::testing::Test {
protected:
    void TearDown() override {
        EXPECT_TRUE(StormPeer(phone).isServed());
        expectBoundedMemory(phone);
    }

    bool isServed() {
        Method reply;
        return ServiceXmlAdapter::decodeText(peer.send(kQuestion, kXml), reply) &&
               reply.getStringParameter("schemaName", Parameter::eOut) == "text";
    }
    void expectEmptyReply(const std::string& message) {
        ASSERT_EQ(peer.send(message, kXml), "") << message.substr(0, 200);
        ASSERT_TRUE(isServed());
    }

    RunningPhone phone;
    StormPeer peer{phone};
};

TEST_F(XmlStorm, WhatIsNoMessageIsAnsweredEmpty) {
    const auto request = [](const std::string& content) {
        return "<request name=\"findSchemaName\">" + content + "</request>";
    };
    const auto item = [&request](const std::string& attributes, const std::string& value) {
        return request("<param " + attributes + ">" + value + "</param>");
    };
    ASSERT_TRUE(isServed());
    for (const std::string& message : std::vector<std::string>{
             "",
             std::string(1, '\0'),
             std::string(4096, '\0'),
             "\xff\xfe<",
             " ",
             "garbage",
             honestMessage(),
             "<request/>",
             "<request name=\"\"/>",
             "<request name=\"setdata\"/>",
             "<Request name=\"invalidateVCMSCache\"/>",
             "<reply name=\"invalidateVCMSCache\"/>",
             "<request name=\"invalidateVCMSCache\" name=\"x\"/>",
             "<request name=\"invalidateVCMSCache\" x=\"\"/>",
             "<request name=\"invalidateVCMSCache\"/><request name=\"invalidateVCMSCache\"/>",
             "<request name=\"invalidateVCMSCache\"/>x",
             request(""),
             request("x"),
             item("name='nodeId' type='string'", "x"),
             item("name='nodeId' dir='0'", "x"),
             item("type='string' dir='0'", "x"),
             item("name='nodeId' type='string' dir='1'", "x"),
             item("name='nodeId' type='string' dir='-1'", "x"),
             item("name='nodeId' type='string' dir='3'", "x"),
             item("name='nodeId' type='string' dir='4294967296'", "x"),
             item("name='nodeId' type='text' dir='0'", "x"),
             item("name='nodeId' type='int' dir='0'", "1"),
             item("name='nodeId' type='int' dir='0'", "2147483648"),
             item("name='nodeId' type='bool' dir='0'", "2"),
             item("name='nodeId' type='string' dir='0'", "<x/>"),
             item("name='nodeId' type='string' dir='0'", "&nbsp;"),
             item("name='nodeId' type='string' dir='0'", "&#0;"),
             item("name='nodeid' type='string' dir='0'", "x")}) {
        expectEmptyReply(message);
    }
}

TEST_F(XmlStorm, EveryBeginningOfAMessageIsAnsweredEmptyAndWritesNothing) {
    ASSERT_EQ(phone.ctl({"set", "ringer-melody=before"}).exitCode, 0);
    ManageableData record;
    record.populate("ringer-melody", "after");
    std::string whole;
    ASSERT_TRUE(ServiceXmlAdapter::encodeText(
        methodWith("setData", "manageableData", Parameter::eInOut, record.serialize()), whole));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        expectEmptyReply(whole.substr(0, length));
    }
    EXPECT_EQ(phone.ctl({"get", "ringer-melody"}).out, "ringer-melody = before\n");
}

TEST_F(XmlStorm, WhateverOneByteIsMadeOfThereIsOneReplyAndTheNextIsServed) {
    const std::string whole = kQuestion;
    for (std::size_t position = 0; position < whole.size(); ++position) {
        for (const char byte : {'\0', '\xff', '<', '>', '&', '"', ' '}) {
            std::string changed = whole;
            changed[position] = byte;
            ASSERT_NE(peer.send(changed, kXml), "no reply");
            ASSERT_TRUE(isServed());
        }
    }
}

TEST_F(XmlStorm, WhatWantsToBeHugeIsAnsweredEmpty) {
    const std::string head =
        "<request name=\"findSchemaName\"><param name=\"x\" type=\"xml\" dir=\"0\">";
    const std::string tail = "</param></request>";
    std::string entities = "<!DOCTYPE request [<!ENTITY e0 \"eeeeeeeeee\">";
    for (int i = 1; i < 12; ++i) {
        const std::string before = "&e" + std::to_string(i - 1) + ";";
        entities += "<!ENTITY e" + std::to_string(i) + " \"";
        for (int copies = 0; copies < 10; ++copies) {
            entities += before;
        }
        entities += "\">";
    }
    std::string attributes = "<request ";
    for (int i = 0; i < 200000; ++i) {
        attributes += "a" + std::to_string(i) + "=\"\" ";
    }
    std::string deep;
    for (int i = 0; i < 1000000; ++i) {
        deep += "<n>";
    }
    for (const std::string& message : std::vector<std::string>{
             entities + "]>" + head + "&e11;" + tail,
             "<!DOCTYPE request SYSTEM \"file:///etc/passwd\">" + head + tail,
             head + nested(63) + tail, head + nested(100000) + tail, head + deep, attributes + "/>",
             head + std::string(3U << 20U, '&') + tail, "<" + std::string(3U << 20U, 'r'),
             std::string(FrameCodec::kMaximumPayload, '<'),
             std::string(FrameCodec::kMaximumPayload + 1, '<')}) {
        expectEmptyReply(message);
    }
    std::string deepest = kQuestion;
    deepest.insert(deepest.find("<param"),
                   "<param name=\"x\" type=\"xml\" dir=\"0\">" + nested(62) + "</param>");
    EXPECT_NE(peer.send(deepest, kXml), "") << "64 levels are allowed";
}

}  // namespace
}  // namespace vireo::test
