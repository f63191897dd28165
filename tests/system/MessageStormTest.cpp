#include <map>
#include <vector>

#include "StormPeer.h"
#include "messages/ServiceXmlAdapter.h"

namespace vireo::test {
namespace {

constexpr const char* kXml = VireoProtocols::SERVICE_XML;

class MessageStorm : public ::testing::Test {
protected:
    void TearDown() override {
        EXPECT_TRUE(StormPeer(phone).isServed());
        expectBoundedMemory(phone);
    }

    /// The message is not understood: an empty reply, and the next one is served.
    void expectEmptyReply(const std::string& message,
                          const char* protocol = VireoProtocols::DEFAULT) {
        ASSERT_EQ(peer.send(message, protocol), "");
        ASSERT_TRUE(peer.isServed());
    }

    RunningPhone phone;
    StormPeer peer{phone};
};

/// "ringer-melody" with a value.
std::string melodyRecord(const std::string& value) {
    ManageableData record;
    record.populate("ringer-melody", value);
    return record.serialize();
}

std::string setMelody(const std::string& value) {
    return rpcText(methodWith("setData", "manageableData", Parameter::eInOut, melodyRecord(value)));
}

/// The same in each protocol.
std::map<const char*, std::string> setMelodyInAll(const std::string& value) {
    std::string xml;
    EXPECT_TRUE(ServiceXmlAdapter::encodeText(
        methodWith("setData", "manageableData", Parameter::eInOut, melodyRecord(value)), xml));
    return {{VireoProtocols::DEFAULT, setMelody(value)}, {kXml, xml}};
}

TEST_F(MessageStorm, NumbersThatCannotBeMakeAnEmptyReply) {
    const std::string item = "6;nodeId1;2;8;language";
    for (const char* number :
         {"-1", "2", "4", "99", "2147483647", "-2147483648", "2147483648", "18446744073709551615",
          "99999999999999999999", "", "x", "0x1", " 1", "+1", "1.0"}) {
        SCOPED_TRACE(number);
        const std::string n(number);
        for (const std::string& message : {
                 n + ";findSchemaName0;1;" + item,                      // length of the name
                 "14;findSchemaName" + n + ";1;" + item,                // type of the method
                 "14;findSchemaName0;" + n + ";" + item,                // number of parameters
                 "14;findSchemaName0;1;" + n + ";nodeId1;2;8;language"  // length of a name
             }) {
            expectEmptyReply(message);
        }
    }
    for (const char* number : {"-1", "4", "2147483647", "-2147483648", "2147483648", "", "x"}) {
        SCOPED_TRACE(number);
        const std::string n(number);
        for (const std::string& message :
             {"14;findSchemaName0;1;6;nodeId" + n + ";2;8;language",   // type of a parameter
              "14;findSchemaName0;1;6;nodeId1;" + n + ";8;language",   // its direction
              "14;findSchemaName0;1;6;nodeId1;2;" + n + ";language"})  // length of its value
        {
            expectEmptyReply(message);
        }
    }
}

TEST_F(MessageStorm, EveryBeginningOfAMessageIsAnsweredEmptyAndWritesNothing) {
    ASSERT_EQ(phone.ctl({"set", "ringer-melody=before"}).exitCode, 0);
    for (const auto& [protocol, whole] : setMelodyInAll("after")) {
        for (std::size_t length = 0; length < whole.size(); ++length) {
            SCOPED_TRACE(length);
            expectEmptyReply(whole.substr(0, length), protocol);
        }
    }
    EXPECT_EQ(phone.ctl({"get", "ringer-melody"}).out, "ringer-melody = before\n");
}

TEST_F(MessageStorm, EveryBeginningOfARecordIsRefusedAndWritesNothing) {
    ASSERT_EQ(phone.ctl({"set", "ringer-melody=before"}).exitCode, 0);
    const std::string whole = melodyRecord("after");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        SCOPED_TRACE(length);
        for (const char* method : {"setData", "getData"}) {
            const auto [result, answer] = peer.exchange(method, whole.substr(0, length));
            EXPECT_FALSE(result);
            ASSERT_EQ(answer.rejections().size(), 1U);
            EXPECT_EQ(answer.rejections()[0].reason(), "Invalid data");
        }
    }
    EXPECT_EQ(phone.ctl({"get", "ringer-melody"}).out, "ringer-melody = before\n");
}

TEST_F(MessageStorm, WhateverOneByteIsMadeOfThereIsOneReplyAndTheNextIsServed) {
    for (const auto& [protocol, whole] : setMelodyInAll("value")) {
        for (std::size_t position = 0; position < whole.size(); ++position) {
            SCOPED_TRACE(position);
            std::vector<std::string> changes(1, whole);
            changes[0].erase(position, 1);
            for (const char byte : {'\0', '\xff', ';', '<', '>', '&', '"', ' '}) {
                changes.push_back(whole);
                changes.back()[position] = byte;
            }
            for (const std::string& changed : changes) {
                ASSERT_NE(peer.send(changed, protocol), "no reply");
                ASSERT_TRUE(peer.isServed());
            }
        }
    }
    for (const std::string& nothing : {std::string(), std::string(1, '\0'), std::string(4096, '\0'),
                                       std::string(1U << 20U, '\0')}) {
        expectEmptyReply(nothing);
        expectEmptyReply(nothing, kXml);
        expectEmptyReply(nothing, "no_such_protocol");
    }
}

/// A question of exactly `size` bytes.
std::string questionOf(std::size_t size) {
    const auto question = [](std::size_t length) {
        return rpcText(
            methodWith("findSchemaName", "nodeId", Parameter::eIn, std::string(length, 'q')));
    };
    const std::size_t around = question(size - 64).size() - (size - 64);
    return question(size - around);
}

TEST_F(MessageStorm, TheLongestMessageIsServedAndAByteMoreIsNot) {
    const std::string longest = questionOf(FrameCodec::kMaximumPayload);
    ASSERT_EQ(longest.size(), FrameCodec::kMaximumPayload);
    const std::string tooLong = questionOf(FrameCodec::kMaximumPayload + 1);
    ASSERT_EQ(tooLong.size(), FrameCodec::kMaximumPayload + 1U);
    for (int round = 0; round < 3; ++round) {
        EXPECT_NE(peer.send(longest), "") << "it is understood, and answered with no schema";
        EXPECT_TRUE(peer.isServed());
        expectEmptyReply(tooLong);
        expectEmptyReply(std::string(FrameCodec::kMaximumPayload, '\xff'));
    }
}

/// So many copies of `text`, each with its number in the place of a '#'.
std::string numbered(int count, const std::string& text) {
    const std::size_t at = text.find('#');
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += at == std::string::npos
                   ? text
                   : text.substr(0, at) + std::to_string(i) + text.substr(at + 1);
    }
    return all;
}

TEST_F(MessageStorm, RecordsThatWantToBeHugeOrHoldWhatXmlCannotCarryAreRefused) {
    const std::string manyIds = numbered(60000, "<rootId>i#</rootId>");
    const std::string attributes = "<n " + numbered(200000, "a#=\"\" ") + "/>";
    const std::string bomb =
        "<!DOCTYPE r [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">]>"
        "<record><rootId>&b;&b;</rootId></record>";
    const std::string longName =
        "<record><rootId>" + std::string(3U << 20U, 'x') + "</rootId></record>";
    const std::string value = "<record><rootId>a</rootId><document name=\"a\" schema=\"a\">";
    for (const std::string& record :
         {value + "&#1;</document></record>", value + "\xff</document></record>",
          value + std::string(1, '\0') + "</document></record>", value + numbered(200000, "<n>"),
          "<record>" + manyIds + "</record>", value + attributes + "</document></record>", bomb,
          longName, "<record>" + std::string(3U << 20U, '&') + "</record>",
          "<record>" + std::string(3U << 20U, ' ') + "x</record>"}) {
        SCOPED_TRACE(record.substr(0, 60));
        for (const char* method : {"setData", "getData"}) {
            EXPECT_FALSE(peer.exchange(method, record).first);
            ASSERT_TRUE(peer.isServed());
        }
    }
}

std::string nested(int levels) {
    return numbered(levels, "<n>") + numbered(levels, "</n>");
}

TEST_F(MessageStorm, XmlThatWantsToBeHugeIsAnsweredEmpty) {
    const std::string head =
        "<request name=\"findSchemaName\"><param name=\"x\" type=\"xml\" dir=\"0\">";
    const std::string tail = "</param></request>";
    std::string entities = "<!DOCTYPE request [<!ENTITY e0 \"eeeeeeeeee\">";
    for (int i = 1; i < 12; ++i) {
        const std::string before = "&e" + std::to_string(i - 1) + ";";
        entities += "<!ENTITY e" + std::to_string(i) + " \"" + numbered(10, before) + "\">";
    }
    const std::string attributes = "<request " + numbered(200000, "a#=\"\" ") + "/>";
    for (const std::string& message : std::vector<std::string>{
             entities + "]>" + head + "&e11;" + tail,
             "<!DOCTYPE request SYSTEM \"file:///etc/passwd\">" + head + tail,
             head + nested(63) + tail, head + nested(100000) + tail,
             head + numbered(1000000, "<n>"), attributes, head + std::string(3U << 20U, '&') + tail,
             "<" + std::string(3U << 20U, 'r'), std::string(FrameCodec::kMaximumPayload, '<'),
             std::string(FrameCodec::kMaximumPayload + 1, '<')}) {
        expectEmptyReply(message, kXml);
    }
    EXPECT_NE(peer.send(head + nested(62) +
                            "</param><param name=\"nodeId\" type=\"string\" "
                            "dir=\"0\">language" +
                            tail,
                        kXml),
              "")
        << "64 levels are allowed";
}

}  // namespace
}  // namespace vireo::test
