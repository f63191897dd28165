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
        {LocalMgmtClient::Protocol::eXml, rpcHead + "1;1;6;-1;15;", CallStatus::eMalformedReply},
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

TEST(ClientMethods, AddsAKnownSchemaAndLeavesTheRecordOtherwise) {
    ScriptedPeer peer([](PeerStream& stream) {
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
    ScriptedPeer peer([](PeerStream& stream) {
        stream.expect(
            "34;registerManagementIdentityBulkData0;2;12;managementId1;0;2;Id"
            "18;bulkDataManageable2;0;1;",
            encoded(resultReply("registerManagementIdentityBulkData", false)));
        stream.expect("19;observeDataBulkData0;2;6;nodeId1;0;1;x18;bulkDataManageable2;0;0;",
                      encoded(resultReply("observeDataBulkData", true)));
        stream.expect("23;observeListDataBulkData0;1;7;rootIds1;0;9;2;1;x2;yz",
                      encoded(resultReply("observeListDataBulkData", true)));
        stream.expect("17;stopObservingData0;1;6;nodeId1;0;1;x",
                      encoded(resultReply("stopObservingData", true)));
        stream.reply(announcedReply(3));
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
}

TEST(ClientMethods, WithoutAnAgentAndACallbackNothingThatNeedsOneIsSentOrServed) {
    ScriptedPeer peer([](PeerStream& stream) {
        stream.write(callbackFrame(FrameKind::eRequest, 1, "15;requestShutdown"));
        const auto nothing = stream.read();
        ASSERT_TRUE(nothing);
        EXPECT_EQ(nothing->kind, FrameKind::eReply);
        EXPECT_EQ(nothing->payload, "");
        EXPECT_EQ(stream.askAgent(2, "resetUserData:"), "");
    });
    const auto client = connectTo(peer);
    bool result = false;
    EXPECT_EQ(client->startDownloadWithCallback(LocalMgmtIfc::FILETYPE_SOFTWARE, result),
              CallStatus::eNoCallback);
    EXPECT_EQ(client->startDownloadFrom({}, LocalMgmtIfc::FILETYPE_RINGER, true, result),
              CallStatus::eNoCallback);
    EXPECT_EQ(client->registerManagementIdentity("Id", true, result), CallStatus::eNoAgent);
    EXPECT_EQ(client->observeData("x", true, result), CallStatus::eNoAgent);
    EXPECT_EQ(client->observeListData({"x"}, result), CallStatus::eNoAgent);
    EXPECT_EQ(client->stopObservingData("x", result), CallStatus::eNoAgent);
    serveToTheEnd(*client);
}

}  // namespace
}  // namespace vireo
