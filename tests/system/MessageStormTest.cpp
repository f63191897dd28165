#include <vector>

#include "StormPeer.h"

namespace vireo::test {
namespace {

class MessageStorm : public ::testing::Test {
protected:
    void TearDown() override {
        EXPECT_TRUE(StormPeer(phone).isServed());
        expectBoundedMemory(phone);
    }

    /// The message is not understood: an empty reply, and the next one is served.
    void expectEmptyReply(const std::string& message,
                          const char* protocol = VireoProtocols::DEFAULT,
                          const char* interfaceName = kLocalInterface) {
        ASSERT_EQ(peer.send(message, protocol, interfaceName), "");
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

TEST_F(MessageStorm, WhoeverIsAddressedWronglyIsAnsweredEmpty) {
    const std::string longName(255, 'n');
    for (const char* protocol : {"", "vireo_rpcx", "VIREO_RPC", "vireo_text", longName.c_str()}) {
        SCOPED_TRACE(protocol);
        expectEmptyReply(honestMessage(), protocol);
    }
    for (const char* interfaceName : {"", "localMgmtIfc", "RemoteMgmtIfc", longName.c_str()}) {
        SCOPED_TRACE(interfaceName);
        expectEmptyReply(honestMessage(), VireoProtocols::DEFAULT, interfaceName);
    }
    for (const char* method : {"", "setdata", "setData ", "no such method", longName.c_str()}) {
        SCOPED_TRACE(method);
        expectEmptyReply(rpcText(Method(method, Method::eRequest)));
    }
}

TEST_F(MessageStorm, AParameterThatIsMissingOrMistypedMakesAnEmptyReply) {
    const struct {
        const char* method;
        const char* parameter;
        Parameter::directions direction;
    } rows[] = {
        {"setData", "manageableData", Parameter::eInOut},
        {"getData", "manageableData", Parameter::eInOut},
        {"findSchemaName", "nodeId", Parameter::eIn},
        {"exportSchema", "schemaName", Parameter::eIn},
        {"getSchema", "schemaName", Parameter::eIn},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.method);
        Method none(row.method, Method::eRequest);
        Method asInt = none;
        asInt.addIntParameter(row.parameter, row.direction, 1);
        Method asBool = none;
        asBool.addBoolParameter(row.parameter, row.direction, true);
        Method asXml = none;
        asXml.addXMLParameter(row.parameter, row.direction, "<record/>");
        Method asAnswer = none;
        asAnswer.addStringParameter(row.parameter, Parameter::eOut, "<record></record>");
        Method otherName = none;
        otherName.addStringParameter("manageabledata", row.direction, "<record></record>");
        for (const Method& wrong : {none, asInt, asBool, asXml, asAnswer, otherName}) {
            expectEmptyReply(rpcText(wrong));
        }
    }
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
    const std::string whole = setMelody("after");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        SCOPED_TRACE(length);
        expectEmptyReply(whole.substr(0, length));
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
    const std::string whole = setMelody("value");
    for (std::size_t position = 0; position < whole.size(); ++position) {
        SCOPED_TRACE(position);
        for (const char byte : {'\0', '\xff', ';', '<', '&'}) {
            std::string changed = whole;
            changed[position] = byte;
            ASSERT_NE(peer.send(changed), "no reply");
            ASSERT_TRUE(peer.isServed());
        }
        std::string shorter = whole;
        shorter.erase(position, 1);
        ASSERT_NE(peer.send(shorter), "no reply");
        ASSERT_TRUE(peer.isServed());
    }
    for (const std::string& nothing : {std::string(), std::string(1, '\0'), std::string(4096, '\0'),
                                       std::string(1U << 20U, '\0')}) {
        expectEmptyReply(nothing);
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

TEST_F(MessageStorm, RecordsThatWantToBeHugeAreRefused) {
    std::string deep = "<record><rootId>a</rootId><document name=\"a\" schema=\"a\">";
    for (int i = 0; i < 200000; ++i) {
        deep += "<n>";
    }
    std::string manyIds = "<record>";
    for (int i = 0; i < 60000; ++i) {
        manyIds += "<rootId>i" + std::to_string(i) + "</rootId>";
    }
    std::string attributes = "<record><document name=\"a\" schema=\"a\"><n ";
    for (int i = 0; i < 200000; ++i) {
        attributes += "a" + std::to_string(i) + "=\"\" ";
    }
    const std::string bomb =
        "<!DOCTYPE r [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">]>"
        "<record><rootId>&b;&b;</rootId></record>";
    const std::string longName =
        "<record><rootId>" + std::string(3U << 20U, 'x') + "</rootId></record>";
    for (const std::string& record :
         {deep, manyIds + "</record>", attributes + "/></document></record>", bomb, longName,
          "<record>" + std::string(3U << 20U, '&') + "</record>",
          "<record>" + std::string(3U << 20U, ' ') + "x</record>"}) {
        SCOPED_TRACE(record.substr(0, 60));
        for (const char* method : {"setData", "getData"}) {
            EXPECT_FALSE(peer.exchange(method, record).first);
            ASSERT_TRUE(peer.isServed());
        }
    }
}

}  // namespace
}  // namespace vireo::test
