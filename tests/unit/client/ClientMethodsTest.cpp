#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "LocalMgmtClient.h"
#include "messages/ServiceXmlAdapter.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

class QuietAgent : public MgmtAgentIfc {
    bool setData(ManageableData&) override { return false; }
    bool getData(ManageableData&) override { return false; }
    bool manageableDataChanged(ManageableData&) override { return true; }
    bool resetUserData() override { return true; }
};

TEST(ClientMethods, SpeaksXmlWhenAsked) {
    ScriptedPeer peer([](PeerStream& stream) {
        stream.welcome();
        const auto request = stream.read();
        ASSERT_TRUE(request);
        EXPECT_EQ(request->protocol, "vireo_svc_xml");
        EXPECT_EQ(request->payload,
                  "<request name=\"getData\"><param name=\"manageableData\" type=\"string\" "
                  "dir=\"2\">&lt;record&gt;&lt;rootId&gt;time&lt;/rootId&gt;&lt;/record&gt;</param>"
                  "</request>");
        std::string reply;
        ManageableData answer;
        answer.populate("time", "a & b\r\n");
        ServiceXmlAdapter::encodeText(recordReply("getData", true, answer.serialize()), reply);
        stream.send(FrameKind::eReply, request->header.correlation, reply);
        stream.reply(encoded(recordReply("getData", true, answer.serialize())));
        EXPECT_FALSE(stream.read()) << "what cannot be carried must not be sent";
    });
    const auto client = connectTo(peer, nullptr, LocalMgmtClient::Protocol::eXml);
    ManageableData record;
    record.addRootId("time", nullptr);
    bool result = false;
    ASSERT_EQ(client->getData(record, result), CallStatus::eDone);
    std::string value;
    EXPECT_TRUE(record.interogate("time", "time", value));
    EXPECT_EQ(value, "a & b\r\n");
    EXPECT_EQ(client->getData(record, result), CallStatus::eMalformedReply)
        << "an answer in another protocol";
    EXPECT_EQ(client->findSchemaName("a\x01", value), CallStatus::eNotCarried);
    EXPECT_EQ(value, "a & b\r\n");
}

TEST(ClientMethods, ReadsFileTypeLimitsAndTheBusyMaskInBothProtocols) {
    const std::string head = "<response name=\"getFileTypeMetadata\"><param name=\"";
    const std::string xmlLimits = head + "FileTypeMetadata\" type=\"xml\" dir=\"1\">";
    const std::string rpcHead = "19;getFileTypeMetadata1;1;16;FileTypeMetadata";
    const struct {
        LocalMgmtClient::Protocol protocol;
        std::string limits;
        CallStatus status;
    } rows[] = {
        {LocalMgmtClient::Protocol::eRpc, rpcHead + "1;1;6;-1;15;", CallStatus::eDone},
        {LocalMgmtClient::Protocol::eRpc, rpcHead + "1;1;3;-1;", CallStatus::eMalformedReply},
        {LocalMgmtClient::Protocol::eRpc, rpcHead + "1;1;7;-1;15;x", CallStatus::eMalformedReply},
        {LocalMgmtClient::Protocol::eRpc, rpcHead + "0;1;15;", CallStatus::eMalformedReply},
        {LocalMgmtClient::Protocol::eXml,
         xmlLimits + "<maxFileTypeEntries>-1</maxFileTypeEntries><maxFileTypeNameChars>15"
                     "</maxFileTypeNameChars></param></response>",
         CallStatus::eDone},
        {LocalMgmtClient::Protocol::eXml,
         xmlLimits + "<maxFileTypeEntries>-1</maxFileTypeEntries></param></response>",
         CallStatus::eMalformedReply},
        {LocalMgmtClient::Protocol::eXml,
         xmlLimits + "<maxFileTypeEntries>-1</maxFileTypeEntries><maxFileTypeNameChars>1x"
                     "</maxFileTypeNameChars></param></response>",
         CallStatus::eMalformedReply},
    };
    for (const auto& row : rows) {
        ScriptedPeer peer([&row](PeerStream& stream) {
            Method busy("retrievePhoneBusyStatus", Method::eResponse);
            busy.addIntParameter("busyStatus", Parameter::eOut, -1);
            std::string reply = encoded(busy);
            if (row.protocol == LocalMgmtClient::Protocol::eXml) {
                reply.clear();
                ServiceXmlAdapter::encodeText(busy, reply);
            }
            stream.welcome();
            stream.reply(row.limits);
            stream.reply(reply);
        });
        const auto client = connectTo(peer, nullptr, row.protocol);
        LocalMgmtClient::FileTypeLimits limits{7, 7};
        EXPECT_EQ(client->getFileTypeMetadata("images", limits), row.status) << row.limits;
        const bool done = row.status == CallStatus::eDone;
        EXPECT_EQ(limits.entries, done ? -1 : 7);
        EXPECT_EQ(limits.nameCharacters, done ? 15 : 7);
        unsigned mask = 0;
        EXPECT_EQ(client->retrievePhoneBusyStatus(mask), CallStatus::eDone);
        EXPECT_EQ(mask, 0xFFFFFFFFU);
    }
}

TEST(ClientMethods, ReplacesTheRecordByTheAnswerWithItsRefusals) {
    ScriptedPeer peer([](PeerStream& stream) {
        stream.welcome();
        ManageableData answer;
        answer.populate("time", "time", "a & b\n");
        answer.addRejectReason("date", "//*", "Unknown");
        stream.reply(recordReply("setData", false, answer.serialize()));
    });
    const auto client = connectTo(peer);
    ManageableData record;
    record.populate("time", "time", "before");
    record.populate("date", "date", "before");
    bool result = true;
    ASSERT_EQ(client->setData(record, result), CallStatus::eDone);
    EXPECT_FALSE(result);
    std::string value;
    EXPECT_TRUE(record.interogate("time", "time", value));
    EXPECT_EQ(value, "a & b\n");
    EXPECT_FALSE(record.getDocument("date"));
    ASSERT_EQ(record.rejections().size(), 1U);
    EXPECT_EQ(record.rejections()[0].reason(), "Unknown");
}

TEST(ClientMethods, AddsAKnownSchemaAndLeavesTheRecordOtherwise) {
    ScriptedPeer peer([](PeerStream& stream) {
        stream.welcome();
        stream.reply(recordReply("getSchema", false, "<record/>"));
        ManageableData answer;
        answer.putSchema(std::make_shared<const DxlSchema>("clock"));
        stream.reply(recordReply("getSchema", true, answer.serialize()));
    });
    const auto client = connectTo(peer);
    ManageableData record;
    record.populate("time", "time", "12:00");
    bool result = true;
    EXPECT_EQ(client->getSchema("clock", record, result), CallStatus::eDone);
    EXPECT_FALSE(result);
    EXPECT_FALSE(record.getSchema("clock"));
    EXPECT_EQ(client->getSchema("clock", record, result), CallStatus::eDone);
    EXPECT_TRUE(result);
    EXPECT_TRUE(record.getSchema("clock"));
    EXPECT_TRUE(record.getDocument("time"));
}

TEST(ClientMethods, RegistersObservesAndAnnouncesByTheirMethods) {
    const auto resultOf = [](const char* name, bool result) {
        Method reply(name, Method::eResponse);
        reply.addBoolParameter("result", Parameter::eOut, result);
        return encoded(reply);
    };
    ScriptedPeer peer([&resultOf](PeerStream& stream) {
        stream.welcome();
        const struct {
            const char* request;
            std::string reply;
        } rows[] = {
            {"34;registerManagementIdentityBulkData0;2;12;managementId1;0;2;Id"
             "18;bulkDataManageable2;0;1;",
             resultOf("registerManagementIdentityBulkData", false)},
            {"19;observeDataBulkData0;2;6;nodeId1;0;1;x18;bulkDataManageable2;0;0;",
             resultOf("observeDataBulkData", true)},
            {"23;observeListDataBulkData0;1;7;rootIds1;0;9;2;1;x2;yz",
             resultOf("observeListDataBulkData", true)},
            {"17;stopObservingData0;1;6;nodeId1;0;1;x", resultOf("stopObservingData", true)},
        };
        for (const auto& row : rows) {
            const auto request = stream.read();
            ASSERT_TRUE(request);
            EXPECT_EQ(request->payload, row.request);
            stream.send(FrameKind::eReply, request->header.correlation, row.reply);
        }
        Method told("manageableDataChanged", Method::eResponse);
        told.addIntParameter("numObservers", Parameter::eOut, 3);
        told.addStringParameter("manageableData", Parameter::eOut, "<record></record>");
        stream.reply(told);
    });
    QuietAgent agent;
    const auto client = connectTo(peer, &agent);
    bool result = true;
    EXPECT_EQ(client->registerManagementIdentity("Id", true, result), CallStatus::eDone);
    EXPECT_FALSE(result);
    EXPECT_EQ(client->observeData("x", false, result), CallStatus::eDone);
    EXPECT_TRUE(result);
    EXPECT_EQ(client->observeListData({"x", "yz"}, result), CallStatus::eDone);
    EXPECT_EQ(client->stopObservingData("x", result), CallStatus::eDone);
    ManageableData record;
    record.populate("x", "1");
    int observers = 0;
    EXPECT_EQ(client->manageableDataChanged(record, observers), CallStatus::eDone);
    EXPECT_EQ(observers, 3);

    ScriptedPeer silent([](PeerStream& stream) {
        stream.welcome();
        EXPECT_FALSE(stream.read());
    });
    const auto agentless = connectTo(silent);
    EXPECT_EQ(agentless->registerManagementIdentity("Id", true, result), CallStatus::eNoAgent);
    EXPECT_EQ(agentless->observeData("x", true, result), CallStatus::eNoAgent);
    EXPECT_EQ(agentless->observeListData({"x"}, result), CallStatus::eNoAgent);
    EXPECT_EQ(agentless->stopObservingData("x", result), CallStatus::eNoAgent);
}

}  // namespace
}  // namespace vireo
