#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "LocalMgmtClient.h"
#include "messages/ServiceXmlAdapter.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPatience{10000};
constexpr milliseconds kBrief{30};

std::unique_ptr<LocalMgmtClient> connectTo(
    const ScriptedPeer& peer,
    LocalMgmtClient::Protocol protocol = LocalMgmtClient::Protocol::eRpc) {
    std::string error;
    LocalMgmtClient::Options options;
    options.protocol = protocol;
    options.socketPath = peer.socketPath();
    options.timeout = kPatience;
    auto client = LocalMgmtClient::connect(options, error);
    EXPECT_TRUE(client) << error;
    return client;
}

Method textReply(const std::string& name, const std::string& parameter, const std::string& value) {
    Method method(name, Method::eResponse);
    method.addStringParameter(parameter, Parameter::eOut, value);
    return method;
}

Method recordReply(const std::string& name, bool result, const std::string& record) {
    Method method(name, Method::eResponse);
    method.addBoolParameter("result", Parameter::eOut, result);
    method.addStringParameter("manageableData", Parameter::eOut, record);
    return method;
}

TEST(LocalMgmtClient, SendsTheMethodToTheLocalInterfaceAndReturnsTheReply) {
    ScriptedPeer peer([](PeerStream& stream) {
        stream.welcome();
        const auto request = stream.read();
        ASSERT_TRUE(request);
        EXPECT_EQ(request->protocol, "vireo_rpc");
        EXPECT_EQ(request->interfaceName, "LocalMgmtIfc");
        Method asked("findSchemaName", Method::eRequest);
        asked.addStringParameter("nodeId", Parameter::eIn, "time");
        EXPECT_EQ(request->payload, encoded(asked));
        stream.send(FrameKind::eReply, request->header.correlation,
                    encoded(textReply("findSchemaName", "schemaName", "clock")));
    });
    const auto client = connectTo(peer);
    std::string name;
    EXPECT_EQ(client->findSchemaName("time", name), CallStatus::eDone);
    EXPECT_EQ(name, "clock");
}

TEST(LocalMgmtClient, SpeaksXmlWhenAsked) {
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
    const auto client = connectTo(peer, LocalMgmtClient::Protocol::eXml);
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

TEST(LocalMgmtClient, ReadsFileTypeLimitsAndTheBusyMaskInBothProtocols) {
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
        const auto client = connectTo(peer, row.protocol);
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

TEST(LocalMgmtClient, PutsAReplyInOneBytePiecesTogether) {
    ScriptedPeer peer([](PeerStream& stream) {
        stream.welcome();
        const auto request = stream.read();
        ASSERT_TRUE(request);
        stream.sendBytesOneByOne(frame(FrameKind::eReply, request->header.correlation,
                                       encoded(textReply("exportSchema", "schemaXml", "<a/>"))));
    });
    const auto client = connectTo(peer);
    std::string xml;
    EXPECT_EQ(client->exportSchema("a", xml), CallStatus::eDone);
    EXPECT_EQ(xml, "<a/>");
}

TEST(LocalMgmtClient, CarriesTheLargestPayloadBothWaysAndRefusesMore) {
    const std::string largest(FrameCodec::kMaximumPayload, 'v');
    ScriptedPeer peer([&largest](PeerStream& stream) {
        stream.welcome();
        const auto request = stream.read();
        ASSERT_TRUE(request);
        EXPECT_TRUE(request->payload == largest);
        stream.send(FrameKind::eReply, request->header.correlation, request->payload);
        EXPECT_FALSE(stream.read()) << "what is too large must not be sent in part";
    });
    const auto client = connectTo(peer);
    std::string reply;
    EXPECT_EQ(client->callRaw("vireo_text", largest, reply), CallStatus::eDone);
    EXPECT_TRUE(reply == largest);
    reply = "kept";
    EXPECT_EQ(client->callRaw("vireo_text", largest + "v", reply), CallStatus::eTooLarge);
    EXPECT_EQ(client->callRaw(std::string(256, 'p'), "x", reply), CallStatus::eTooLarge);
    EXPECT_EQ(reply, "kept");
}

TEST(LocalMgmtClient, DropsTheLateReplyOfACallThatTimedOut) {
    ScriptedPeer peer([](PeerStream& stream) {
        stream.welcome();
        const auto first = stream.read();
        const auto second = stream.read();  // comes once the first call has timed out
        ASSERT_TRUE(first && second);
        EXPECT_NE(first->header.correlation, second->header.correlation);
        stream.send(FrameKind::eReply, first->header.correlation,
                    encoded(textReply("findSchemaName", "schemaName", "late")));
        stream.send(FrameKind::eReply, second->header.correlation,
                    encoded(textReply("findSchemaName", "schemaName", "right")));
    });
    const auto client = connectTo(peer);
    client->setTimeout(kBrief);
    std::string name = "kept";
    EXPECT_EQ(client->findSchemaName("a", name), CallStatus::eTimedOut);
    EXPECT_EQ(name, "kept");
    client->setTimeout(kPatience);
    EXPECT_EQ(client->findSchemaName("b", name), CallStatus::eDone);
    EXPECT_EQ(name, "right");
}

TEST(LocalMgmtClient, FinishesARequestThatTimedOutHalfSentBeforeTheNext) {
    const std::string large(FrameCodec::kMaximumPayload, 'x');
    std::promise<void> gaveUp;
    ScriptedPeer peer([&](PeerStream& stream) {
        stream.welcome();
        gaveUp.get_future().wait();
        const auto first = stream.read();
        ASSERT_TRUE(first);
        EXPECT_TRUE(first->payload == large);
        const auto second = stream.read();
        ASSERT_TRUE(second);
        EXPECT_EQ(second->payload, "small");
        stream.send(FrameKind::eReply, second->header.correlation, "answer");
    });
    const auto client = connectTo(peer);
    client->setTimeout(kBrief);
    std::string reply;
    EXPECT_EQ(client->callRaw("vireo_text", large, reply), CallStatus::eTimedOut);
    // What cannot leave is not queued behind it either.
    EXPECT_EQ(client->callRaw("vireo_text", "never sent", reply), CallStatus::eTimedOut);
    gaveUp.set_value();
    client->setTimeout(kPatience);
    EXPECT_EQ(client->callRaw("vireo_text", "small", reply), CallStatus::eDone);
    EXPECT_EQ(reply, "answer");
}

TEST(LocalMgmtClient, ServesAndDropsWhatArrivesWhileItWaits) {
    ScriptedPeer peer([](PeerStream& stream) {
        stream.welcome();
        stream.send(FrameKind::eNotification, 0, "before any call");
        const auto request = stream.read();
        ASSERT_TRUE(request);
        stream.send(FrameKind::eNotification, 0, "news");
        stream.send(FrameKind::eWelcome, 0, "again");
        stream.send(FrameKind::eReply, 4711, "nobody's");
        // A request of the service may bear any id, also that of the call that waits.
        stream.send(FrameKind::eRequest, request->header.correlation, "question");
        const auto answer = stream.read();
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->header.kind, FrameKind::eReply);
        EXPECT_EQ(answer->header.correlation, request->header.correlation);
        EXPECT_EQ(answer->payload, "");
        stream.send(FrameKind::eReply, request->header.correlation, "mine");
    });
    const auto client = connectTo(peer);
    std::string reply;
    EXPECT_EQ(client->callRaw("vireo_text", "x", reply), CallStatus::eDone);
    EXPECT_EQ(reply, "mine");
    EXPECT_EQ(client->channelName(), "client-1");
}

TEST(LocalMgmtClient, EndsAtOnceAndForGoodWhenTheStreamIsOver) {
    const struct {
        const char* reason;
        std::function<void(PeerStream&)> end;
    } rows[] = {
        {"closed the connection", [](PeerStream& stream) { stream.close(); }},
        {"not a vireo service",
         [](PeerStream& stream) { stream.sendBytes("garbage that is no frame"); }},
        {"unknown kind",
         [](PeerStream& stream) {
             std::string bytes = frame(FrameKind::eReply, 1, {});
             bytes[3] = 99;
             stream.sendBytes(bytes);
         }},
        {"4294967295 bytes",
         [](PeerStream& stream) {
             std::string bytes = frame(FrameKind::eReply, 1, {});
             bytes.replace(12, 4, "\xFF\xFF\xFF\xFF");
             stream.sendBytes(bytes);
         }},
        {"too slow a reader",
         [](PeerStream& stream) {
             stream.send(FrameKind::eRefusal, 0, "too slow a reader");
             stream.close();
         }},
    };
    for (const auto& row : rows) {
        ScriptedPeer peer([&row](PeerStream& stream) {
            stream.welcome();
            stream.read();
            row.end(stream);
            stream.read();  // none comes: the client has closed its end
        });
        const auto client = connectTo(peer);
        std::string reply = "kept";
        EXPECT_EQ(client->callRaw("vireo_text", "x", reply), CallStatus::eDisconnected)
            << row.reason;
        EXPECT_EQ(client->callRaw("vireo_text", "x", reply), CallStatus::eDisconnected);
        EXPECT_NE(client->closeReason().find(row.reason), std::string::npos)
            << client->closeReason();
        EXPECT_EQ(reply, "kept");
    }
}

TEST(LocalMgmtClient, TakesAReplyThatIsFollowedByTheEnd) {
    ScriptedPeer peer([](PeerStream& stream) {
        stream.welcome();
        stream.reply("last words");
        stream.close();
    });
    const auto client = connectTo(peer);
    std::string reply;
    EXPECT_EQ(client->callRaw("vireo_text", "x", reply), CallStatus::eDone);
    EXPECT_EQ(reply, "last words");
    EXPECT_EQ(client->callRaw("vireo_text", "x", reply), CallStatus::eDisconnected);
}

TEST(LocalMgmtClient, TellsEmptyFromMalformedRepliesAndGoesOn) {
    Method request("getData", Method::eRequest);
    const std::string good = encoded(recordReply("getData", true, "<record/>"));
    const struct {
        std::string payload;
        CallStatus expected;
    } rows[] = {
        {"", CallStatus::eEmptyReply},
        {"no method", CallStatus::eMalformedReply},
        {good.substr(0, good.size() - 1), CallStatus::eMalformedReply},
        {good + "x", CallStatus::eMalformedReply},
        {encoded(request), CallStatus::eMalformedReply},  // a request is no reply
        {encoded(recordReply("setData", true, "<record/>")), CallStatus::eMalformedReply},
        {encoded(textReply("getData", "manageableData", "<record/>")), CallStatus::eMalformedReply},
        {encoded(recordReply("getData", true, "<record><rootId>")), CallStatus::eMalformedReply},
        {good, CallStatus::eDone},
    };
    ScriptedPeer peer([&rows](PeerStream& stream) {
        stream.welcome();
        for (const auto& row : rows) {
            stream.reply(row.payload);
        }
    });
    const auto client = connectTo(peer);
    for (const auto& row : rows) {
        ManageableData record;
        ASSERT_TRUE(record.populate("time", "time", "12:00"));
        bool result = false;
        EXPECT_EQ(client->getData(record, result), row.expected) << row.payload;
        const bool done = row.expected == CallStatus::eDone;
        EXPECT_EQ(result, done);
        EXPECT_EQ(record.rootIds().empty(), done) << "the record changes with a good reply only";
    }
}

TEST(LocalMgmtClient, ReplacesTheRecordByTheAnswerWithItsRefusals) {
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

TEST(LocalMgmtClient, AddsAKnownSchemaAndLeavesTheRecordOtherwise) {
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

}  // namespace
}  // namespace vireo
