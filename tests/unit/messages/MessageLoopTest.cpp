#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "LoopFixture.h"
#include "log/Log.h"
#include "messages/MessageLoop.h"

namespace vireo::test {
namespace {

/// A loop that does not run yet.
class NewLoopTest : public LoopFixture {};

/// A running loop with a peer.
class MessageLoopTest : public LoopFixture {
protected:
    MessageLoopTest() {
        start();
        EXPECT_TRUE(peer.connect(m_socket));
        EXPECT_EQ(peer.hello("tester"), "tester");
    }

    FramePeer peer;
};

std::string requestsFor(const std::vector<std::string>& payloads) {
    std::string bytes;
    std::uint32_t correlation = 0;
    for (const std::string& payload : payloads) {
        bytes += FramePeer::frame(FrameKind::eRequest, ++correlation, payload);
    }
    return bytes;
}

/// Reads one reply for each payload; they echo and come in order.
void expectEchoes(FramePeer& peer, const std::vector<std::string>& payloads) {
    std::uint32_t correlation = 0;
    for (const std::string& payload : payloads) {
        const auto reply = peer.read();
        ASSERT_TRUE(reply) << "after " << correlation << " replies";
        ASSERT_EQ(reply->kind, FrameKind::eReply);
        ASSERT_EQ(reply->correlation, ++correlation);
        ASSERT_EQ(reply->payload, payload);
    }
}

std::vector<std::string> numberedPayloads(std::size_t count) {
    std::vector<std::string> payloads;
    for (std::size_t i = 0; i < count; ++i) {
        payloads.push_back("payload " + std::to_string(i) + std::string(i % 7, '.'));
    }
    return payloads;
}

TEST_F(MessageLoopTest, EveryRequestGetsExactlyOneReply) {
    const struct {
        const char* payload;
        const char* interfaceName;
        std::string reply;
        int level;  // of the log line, 0 for none
        const char* line;
    } rows[] = {
        {"hello", "EchoIfc", "hello", 0, ""},
        {"", "EchoIfc", "", 0, ""},
        {"protocol", "EchoIfc", "vireo_rpc", 0, ""},
        {"twice", "EchoIfc", "twice", 0, ""},
        {"silent", "EchoIfc", "", kLogError, "no reply from the invoker of \"EchoIfc\""},
        {"throw", "EchoIfc", "", kLogError, "out of order"},
        {"throw a number", "EchoIfc", "", kLogError, "no standard exception"},
        {"hello", "OtherIfc", "", kLogWarning, "\"OtherIfc\", which nobody offers"},
        {"hello", "", "", kLogWarning, "\"\", which nobody offers"},
        {"big:4194304", "EchoIfc", std::string(4194304, 'b'), 0, ""},
        {"big:4194305", "EchoIfc", "", kLogError, "longer than a frame"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.payload);
        EXPECT_EQ(peer.ask(row.payload, row.interfaceName), row.reply);
        EXPECT_EQ(peer.ask("still there"), "still there");
        if (row.level != 0) {
            EXPECT_EQ(m_log.count(row.level, row.line), 1);
        }
    }
    EXPECT_EQ(m_invoker.lastExecutable.load(), &m_executable);
    EXPECT_EQ(m_log.count(kLogError, ""), 4);
}

TEST_F(MessageLoopTest, NotificationsAreHandledWithoutAReply) {
    for (const char* payload : {"fine", "silent", "throw", "twice"}) {
        peer.write(FramePeer::frame(FrameKind::eNotification, 7, payload));
    }
    peer.write(FramePeer::frame(FrameKind::eNotification, 7, "lost", "vireo_rpc", "OtherIfc"));
    peer.write(FramePeer::frame(FrameKind::eReply, 7, "to nobody"));
    EXPECT_EQ(peer.ask("first reply"), "first reply");
    EXPECT_EQ(m_invoker.handled, 5);
}

TEST_F(MessageLoopTest, FramesAreAnsweredInOrderWhereverTheyAreCut) {
    std::vector<std::string> longAndShort;
    for (std::size_t length : {65535U, 3U, 65536U, 1U, 49000U, 49000U, 200000U, 0U, 4194304U, 5U}) {
        longAndShort.push_back(std::string(length, static_cast<char>('a' + longAndShort.size())));
    }
    const struct {
        std::vector<std::string> payloads;
        std::size_t piece;  // bytes in a write
    } rows[] = {
        {numberedPayloads(20000), std::string::npos},
        {numberedPayloads(200), 1},
        {longAndShort, std::string::npos},
    };
    for (const auto& row : rows) {
        FramePeer cutting(m_socket);
        const std::string bytes =
            FramePeer::frame(FrameKind::eHello, 9, "cutting-*", "", "") + requestsFor(row.payloads);
        for (std::size_t at = 0; at < bytes.size(); at += std::min(row.piece, bytes.size())) {
            ASSERT_TRUE(cutting.write(bytes.substr(at, row.piece)));
        }
        const auto welcome = cutting.read();
        ASSERT_TRUE(welcome);
        EXPECT_EQ(welcome->kind, FrameKind::eWelcome);
        EXPECT_EQ(welcome->correlation, 9U);
        expectEchoes(cutting, row.payloads);
    }
}

TEST_F(MessageLoopTest, APeerThatFloodsLetsTheOthersHaveTheirTurn) {
    FramePeer flooding(m_socket);
    FramePeer other(m_socket);
    ASSERT_EQ(flooding.hello("flooding"), "flooding");
    ASSERT_EQ(other.hello("other"), "other");
    std::promise<void> gate;
    m_loop.postTask([&] { gate.get_future().wait(); });  // until both have sent
    const auto payloads = numberedPayloads(1000);
    ASSERT_TRUE(flooding.write(requestsFor(payloads)));
    ASSERT_TRUE(other.write(FramePeer::frame(FrameKind::eRequest, 1, "count")));
    gate.set_value();
    const auto reply = other.read();
    ASSERT_TRUE(reply);
    EXPECT_LE(std::stoul(reply->payload), MessageLimits().framesInTurn + 1);
    expectEchoes(flooding, payloads);
}

TEST_F(MessageLoopTest, AnOversizedFrameIsThrownAwayAndTheNextOneServed) {
    for (std::size_t excess : {1U, 1U << 20U}) {
        const std::string payload(FrameCodec::kMaximumPayload + excess, 'x');
        EXPECT_EQ(peer.ask(payload), "");
        EXPECT_EQ(peer.ask("next"), "next");
        ASSERT_TRUE(peer.write(FramePeer::frame(FrameKind::eNotification, 1, payload)));
        EXPECT_EQ(peer.ask("and next"), "and next");
    }
    EXPECT_EQ(m_log.count(kLogWarning, "threw away a frame of peer \"tester\""), 4);
    EXPECT_EQ(m_invoker.handled, 4);
}

TEST_F(MessageLoopTest, APeerThatNeverReadsHoldsUpNobodyAndLosesNothing) {
    constexpr int kRequests = 60;
    constexpr std::size_t kReply = 1U << 20U;
    FramePeer stuck(m_socket);
    FramePeer other(m_socket);
    ASSERT_EQ(stuck.hello("stuck"), "stuck");
    ASSERT_EQ(other.hello("other"), "other");
    // All of them lie in the service's buffer at once: no later bytes make it look there again.
    ASSERT_TRUE(stuck.write(
        requestsFor(std::vector<std::string>(kRequests, "big:" + std::to_string(kReply)))));
    EXPECT_EQ(other.ask("served"), "served");
    EXPECT_LE(m_invoker.bigHandled, static_cast<int>(MessageLimits().maximumUnsent / kReply) + 2);
    expectEchoes(stuck, std::vector<std::string>(kRequests, std::string(kReply, 'b')));
    EXPECT_EQ(stuck.ask("awake"), "awake");
}

TEST_F(MessageLoopTest, APeerThatClosesItsSendingSideStillGetsItsReplies) {
    const std::string reply(4000000, 'b');
    ASSERT_TRUE(peer.write(requestsFor({"big:4000000", "big:4000000"})));
    peer.endSending();
    expectEchoes(peer, {reply, reply});
    EXPECT_FALSE(peer.read());
}

TEST_F(MessageLoopTest, TasksRunOnTheMessageThreadInTheOrderOfTheirPosting) {
    constexpr int kTasks = 1000;
    std::vector<int> order;
    std::promise<void> done;
    const auto messageThread = m_thread.get_id();
    bool alwaysThere = true;
    for (int i = 0; i < kTasks; ++i) {
        m_loop.postTask([&, i] {
            alwaysThere = alwaysThere && std::this_thread::get_id() == messageThread;
            order.push_back(i);
        });
    }
    m_loop.postTask([] { throw std::runtime_error("a bad task"); });
    // A task may post: that one comes behind those that are there already.
    m_loop.postTask([&] { m_loop.postTask([&] { done.set_value(); }); });
    done.get_future().wait();
    ASSERT_EQ(order.size(), static_cast<std::size_t>(kTasks));
    for (int i = 0; i < kTasks; ++i) {
        ASSERT_EQ(order[static_cast<std::size_t>(i)], i);
    }
    EXPECT_TRUE(alwaysThere);
    EXPECT_EQ(m_log.count(kLogError, "a bad task"), 1);
}

TEST_F(MessageLoopTest, TasksRunWhileAPeerKeepsTheLoopBusy) {
    for (int round = 0; round < 50; ++round) {
        std::promise<void> done;
        peer.write(FramePeer::frame(FrameKind::eRequest, 1, "busy"));
        m_loop.postTask([&] { done.set_value(); });
        done.get_future().wait();
        ASSERT_TRUE(peer.read());
    }
}

TEST_F(MessageLoopTest, StopEndsTheLoopFromAnyThreadAndClosesConnections) {
    bool posted = false;
    m_loop.postTask([&] { posted = true; });
    m_loop.stop();
    m_thread.join();
    EXPECT_TRUE(posted);
    EXPECT_FALSE(peer.read());
}

TEST_F(NewLoopTest, StopBeforeRunEndsItAtOnce) {
    std::string error;
    ASSERT_TRUE(m_loop.listen(m_socket, MessageLimits(), error)) << error;
    m_loop.stop();
    EXPECT_TRUE(m_loop.run());
}

TEST_F(NewLoopTest, TasksThatNeverRanAreDestroyedWithTheLoop) {
    auto held = std::make_shared<int>(1);
    {
        MessageLoop loop;
        loop.postTask([held] { ++*held; });
    }
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_EQ(*held, 1);
}

}  // namespace
}  // namespace vireo::test
