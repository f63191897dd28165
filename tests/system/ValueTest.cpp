#include <sqlite3.h>

#include "messages/RpcAdapter.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

std::string storedText(const std::string& file, const std::string& query) {
    const Outcome outcome = ChildProcess::run({"sqlite3", "-readonly", file, query});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return outcome.out;
}

std::string hex(const std::string& bytes) {
    std::string text;
    char digits[3];
    for (const char c : bytes) {
        std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(c));
        text += digits;
    }
    return text + "\n";
}

TEST(Values, EveryValueComesBackByteForByteFromMessageAndStore) {
    RunningPhone phone;
    const auto client = phone.connect();
    ASSERT_TRUE(client);
    bool result = false;
    ManageableData neighbours;
    neighbours.populate("ringer-volume", "neighbour column");
    neighbours.populate("key-label-2", "neighbour row");
    ASSERT_EQ(client->setData(neighbours, result), CallStatus::eDone);

    for (const std::string& value : std::vector<std::string>{
             "a&b", "<x>", "\"'", "]]>", "</RingerMelody>", "</RingerMelody><Other>9</Other>",
             "</Label></Entry></Schema>", "\xc3\xa4\xe2\x82\xac\xf0\x9f\x93\x9e",
             std::string(64U << 10U, 'z'), "  leading", "trailing \n", "\r\n\t", "&amp;&#13;", "",
             "x"}) {
        SCOPED_TRACE(value.substr(0, 40));
        ManageableData record;
        for (const char* tag : {"ringer-melody", "key-label-1"}) {
            ASSERT_TRUE(record.populate(tag, value));
        }
        ASSERT_EQ(client->setData(record, result), CallStatus::eDone);
        EXPECT_TRUE(result);
        ManageableData answer;
        answer.addRootId("ringer-melody", nullptr);
        answer.addRootId("key-label-1", nullptr);
        ASSERT_EQ(client->getData(answer, result), CallStatus::eDone);
        for (const char* tag : {"ringer-melody", "key-label-1"}) {
            std::string read;
            EXPECT_TRUE(answer.interogate(tag, tag, read));
            EXPECT_TRUE(read == value) << tag;
        }
        EXPECT_TRUE(storedText(phone.storeFile(), "SELECT hex(RingerMelody) FROM PhoneSettings") ==
                    hex(value));
        EXPECT_TRUE(storedText(phone.storeFile(),
                               "SELECT hex(Label) FROM ProgrammableKeys WHERE KeyIndex = '1'") ==
                    hex(value));
    }
    EXPECT_EQ(storedText(phone.storeFile(), "SELECT RingerVolume FROM PhoneSettings"),
              "neighbour column\n");
    EXPECT_EQ(
        storedText(phone.storeFile(), "SELECT Label FROM ProgrammableKeys WHERE KeyIndex = '2'"),
        "neighbour row\n");
    EXPECT_EQ(storedText(phone.storeFile(), "SELECT count(*) FROM ProgrammableKeys"), "2\n");
}

TEST(Values, WhatXmlCannotCarryIsRefusedAndTheOldValueStays) {
    RunningPhone phone;
    const auto client = phone.connect();
    ASSERT_TRUE(client);
    ManageableData good;
    good.populate("ringer-melody", "old-value");
    bool result = false;
    ASSERT_EQ(client->setData(good, result), CallStatus::eDone);
    for (const std::string& bad :
         {std::string("\x01"), std::string("&#1;"), std::string("\xff"), std::string(1, '\0')}) {
        std::string text = good.serialize();
        text.replace(text.find("old-value"), 9, bad);
        Method request("setData", Method::eRequest);
        request.addStringParameter("manageableData", Parameter::eInOut, text);
        Method reply;
        ASSERT_EQ(client->call(request, reply), CallStatus::eDone);
        EXPECT_FALSE(reply.getBoolParameter("result", Parameter::eOut));
        ManageableData answer;
        ASSERT_TRUE(
            answer.deserialize(reply.getStringParameter("manageableData", Parameter::eOut)));
        ASSERT_EQ(answer.rejections().size(), 1U);
        EXPECT_EQ(answer.rejections()[0].reason(), "Invalid data");
    }
    EXPECT_EQ(phone.ctl({"get", "ringer-melody"}).out, "ringer-melody = old-value\n");
}

TEST(Values, AMessageThatIsWrongInAnyWayGetsOneReplyAndTheNextIsServed) {
    RunningPhone phone;
    const auto client = phone.connect();
    ASSERT_TRUE(client);
    std::string good;
    RpcAdapter::encodeText(Method("invalidateVCMSCache", Method::eRequest), good);
    std::string unknown;
    RpcAdapter::encodeText(Method("setdata", Method::eRequest), unknown);
    const std::vector<std::pair<std::string, std::string>> wrong{
        {"no_such_protocol", good},
        {"", good},
        {"vireo_rpc", ""},
        {"vireo_rpc", "garbage"},
        {"vireo_rpc", good + "more"},
        {"vireo_rpc", unknown},
        {"vireo_rpc", std::string(4U << 20U, '\xff')}};
    for (const auto& [protocol, payload] : wrong) {
        std::string reply = "untouched";
        const CallStatus status = client->callRaw(protocol, payload, reply);
        EXPECT_TRUE(status == CallStatus::eEmptyReply ||
                    (status == CallStatus::eDone && reply.empty()))
            << protocol << ": " << describe(status);
        EXPECT_EQ(client->invalidateVCMSCache(), CallStatus::eDone) << "the next one is served";
    }
}

}  // namespace
}  // namespace vireo::test
