#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "LocalMgmtClient.h"
#include "unit/client/ScriptedPeer.h"

namespace vireo {
namespace {

TEST(LocalMgmtClient, PutsAReplyInOneBytePiecesTogether) {
    ScriptedPeer peer([](PeerStream& stream) {
        const auto request = stream.read();
        ASSERT_TRUE(request);
        stream.writeOneByOne(frame(FrameKind::eReply, request->correlation, "in pieces"));
    });
    EXPECT_EQ(ask(*connectTo(peer), "x"), "in pieces");
}

TEST(LocalMgmtClient, CarriesTheLargestPayloadBothWaysAndRefusesMore) {
    const std::string largest(FrameCodec::kMaximumPayload, 'v');
    ScriptedPeer peer([&largest](PeerStream& stream) {
        const auto request = stream.read();
        ASSERT_TRUE(request);
        EXPECT_TRUE(request->payload == largest);
        stream.send(FrameKind::eReply, request->correlation, request->payload);
        EXPECT_FALSE(stream.read()) << "what is too large must not be sent in part";
    });
    const auto client = connectTo(peer);
    EXPECT_TRUE(ask(*client, largest) == largest);
    std::string reply = "kept";
    EXPECT_EQ(client->callRaw("vireo_text", largest + "v", reply), CallStatus::eTooLarge);
    EXPECT_EQ(client->callRaw(std::string(256, 'p'), "x", reply), CallStatus::eTooLarge);
    EXPECT_EQ(reply, "kept");
}

TEST(LocalMgmtClient, DropsTheLateReplyOfACallThatTimedOut) {
    ScriptedPeer peer([](PeerStream& stream) {
        const auto first = stream.read();
        const auto second = stream.read();  // comes once the first call has timed out
        ASSERT_TRUE(first && second);
        EXPECT_NE(first->correlation, second->correlation);
        stream.send(FrameKind::eReply, first->correlation, "late");
        stream.send(FrameKind::eReply, second->correlation, "right");
    });
    const auto client = connectTo(peer);
    client->setTimeout(kBrief);
    std::string reply = "kept";
    EXPECT_EQ(client->callRaw("vireo_text", "a", reply), CallStatus::eTimedOut);
    EXPECT_EQ(reply, "kept");
    client->setTimeout(kPatience);
    EXPECT_EQ(ask(*client, "b"), "right");
}

TEST(LocalMgmtClient, FinishesARequestThatTimedOutHalfSentBeforeTheNext) {
    const std::string large(FrameCodec::kMaximumPayload, 'x');
    std::promise<void> gaveUp;
    ScriptedPeer peer([&](PeerStream& stream) {
        gaveUp.get_future().wait();
        const auto first = stream.read();
        ASSERT_TRUE(first);
        EXPECT_TRUE(first->payload == large);
        const auto second = stream.read();
        ASSERT_TRUE(second);
        EXPECT_EQ(second->payload, "small");
        stream.send(FrameKind::eReply, second->correlation, "answer");
    });
    const auto client = connectTo(peer);
    client->setTimeout(kBrief);
    std::string reply;
    EXPECT_EQ(client->callRaw("vireo_text", large, reply), CallStatus::eTimedOut);
    // What cannot leave is not queued behind it either.
    EXPECT_EQ(client->callRaw("vireo_text", "never sent", reply), CallStatus::eTimedOut);
    gaveUp.set_value();
    client->setTimeout(kPatience);
    EXPECT_EQ(ask(*client, "small"), "answer");
}

TEST(LocalMgmtClient, EndsAtOnceAndForGoodWhenTheStreamIsOver) {
    const struct {
        const char* reason;
        std::function<void(PeerStream&)> end;
    } rows[] = {
        {"closed the connection", [](PeerStream& stream) { stream.close(); }},
        {"not a vireo service",
         [](PeerStream& stream) { stream.write("garbage that is no frame"); }},
        {"unknown kind",
         [](PeerStream& stream) {
             std::string bytes = frame(FrameKind::eReply, 1, {});
             bytes[3] = 99;
             stream.write(bytes);
         }},
        {"4294967295 bytes",
         [](PeerStream& stream) {
             std::string bytes = frame(FrameKind::eReply, 1, {});
             bytes.replace(12, 4, "\xFF\xFF\xFF\xFF");
             stream.write(bytes);
         }},
        {"too slow a reader",
         [](PeerStream& stream) {
             stream.send(FrameKind::eRefusal, 0, "too slow a reader");
             stream.close();
         }},
    };
    for (const auto& row : rows) {
        ScriptedPeer peer([&row](PeerStream& stream) {
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
        stream.reply("last words");
        stream.close();
    });
    const auto client = connectTo(peer);
    EXPECT_EQ(ask(*client, "x"), "last words");
    std::string reply;
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

}  // namespace
}  // namespace vireo
