#include <functional>
#include <future>

#include "LoopFixture.h"
#include "messages/PeerCalls.h"

namespace vireo::test {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kLong{20000};

/// Answers a message with what `onMessage` makes of it, on the message thread.
struct AskingInvoker : Invoker {
    void initInvoker(FrameworkContext*) override {}
    void handleMessage(Executable*, const char* message, int length,
                       InvokerResponse* response) override {
        const std::string reply = onMessage(std::string(message, static_cast<std::size_t>(length)));
        response->setPayload(reply.data(), static_cast<int>(reply.size()));
        response->send();
    }
    std::function<std::string(const std::string&)> onMessage;
};

/// A loop whose service asks the peer "owner" when it is asked by others. What becomes of a call to
/// a peer that is gone, or does not answer in time, is seen in the tests of owners.
class PeerCallsTest : public LoopFixture {
protected:
    PeerCallsTest() {
        m_asking.onMessage = [this](const std::string& text) { return askOwner(text, kLong); };
        m_loop.serve("AskIfc", m_asking, m_executable);
        start();
        EXPECT_TRUE(m_owner.connect(m_socket) && m_client.connect(m_socket));
        EXPECT_EQ(m_owner.hello("owner"), "owner");
        EXPECT_EQ(m_client.hello("client"), "client");
    }

    std::string askOwner(const std::string& text, milliseconds timeout) {
        std::string reply;
        const bool isAnswered =
            m_loop.calls().call({"owner", "vireo_text", "AgentIfc"}, text, timeout, reply);
        return isAnswered ? "owner said " + reply : "nobody" + reply;
    }
    bool tellOwner(const std::string& text) {
        return m_loop.calls().notify({"owner", "vireo_text", "AgentIfc"}, text);
    }
    void sendAsk(FramePeer& peer, std::uint32_t id, const std::string& text) {
        EXPECT_TRUE(
            peer.write(FramePeer::frame(FrameKind::eRequest, id, text, "vireo_rpc", "AskIfc")));
    }
    /// The question that the owner gets; fails the test when something else comes.
    ReceivedFrame question() {
        const auto frame = m_owner.read();
        EXPECT_TRUE(frame && frame->kind == FrameKind::eRequest);
        return frame.value_or(ReceivedFrame{});
    }
    void answer(const ReceivedFrame& asked, const std::string& text) {
        EXPECT_TRUE(m_owner.write(FramePeer::frame(FrameKind::eReply, asked.correlation, text)));
    }
    std::string reply(FramePeer& peer) {
        const auto frame = peer.read();
        return frame && frame->kind == FrameKind::eReply ? frame->payload : "no reply";
    }

    AskingInvoker m_asking;
    FramePeer m_owner;
    FramePeer m_client;
};

TEST_F(PeerCallsTest, WhatStandsRightBehindAnAnswerIsServed) {
    sendAsk(m_client, 1, "outer");
    const ReceivedFrame asked = question();
    EXPECT_TRUE(m_owner.write(FramePeer::frame(FrameKind::eReply, asked.correlation, "done") +
                              FramePeer::frame(FrameKind::eRequest, 78, "after")));
    EXPECT_EQ(reply(m_client), "owner said done");
    const auto after = m_owner.read();
    ASSERT_TRUE(after);
    EXPECT_EQ(after->payload, "after");
}

TEST_F(PeerCallsTest, APeerMayAskWhatOnlyItCanAnswerSoDeepAndNoDeeper) {
    sendAsk(m_owner, 1, "level");
    std::vector<ReceivedFrame> open;
    for (;;) {
        const auto frame = m_owner.read();
        ASSERT_TRUE(frame);
        if (frame->kind == FrameKind::eReply) {
            EXPECT_EQ(frame->payload, "") << "too deep";
            break;
        }
        open.push_back(*frame);
        sendAsk(m_owner, static_cast<std::uint32_t>(open.size() + 1), "level");
    }
    EXPECT_EQ(open.size(), 17U) << "the first one and sixteen nested";
    EXPECT_EQ(m_log.count(kLogWarning, "is not handled"), 1);
    for (auto asked = open.rbegin(); asked != open.rend(); ++asked) {
        answer(*asked, "up");
        EXPECT_EQ(reply(m_owner), "owner said up");
    }
}

TEST_F(PeerCallsTest, OtherThreadsAskAndTheMessageThreadServesMeanwhile) {
    auto first = std::async(std::launch::async, [this] { return askOwner("first", kLong); });
    const ReceivedFrame asked = question();
    auto second = std::async(std::launch::async, [this] { return askOwner("second", kLong); });
    const ReceivedFrame alsoAsked = question();
    EXPECT_EQ(m_owner.ask("mine"), "mine") << "a frame that another thread came across";
    sendAsk(m_client, 5, "third");
    const ReceivedFrame third = question();
    answer(third, "3");
    EXPECT_EQ(reply(m_client), "owner said 3");
    answer(alsoAsked, "2");
    EXPECT_EQ(second.get(), "owner said 2");
    answer(asked, "1");
    EXPECT_EQ(first.get(), "owner said 1");
    EXPECT_EQ(m_owner.ask("still served"), "still served");
}

TEST_F(PeerCallsTest, ThreadsThatWaitHearOfTheEndAndOfWhatIsNoFrame) {
    for (const bool isGarbage : {true, false}) {
        auto first = std::async(std::launch::async, [this] { return askOwner("first", kLong); });
        question();
        auto second = std::async(std::launch::async, [this] { return askOwner("second", kLong); });
        question();
        const auto begin = Clock::now();
        if (isGarbage) {
            EXPECT_TRUE(m_owner.write(std::string(64, '?')));
            const auto refusal = m_owner.read();
            ASSERT_TRUE(refusal);
            EXPECT_EQ(refusal->kind, FrameKind::eRefusal);
            EXPECT_FALSE(m_owner.read()) << "once";
        }
        m_owner = FramePeer();
        EXPECT_EQ(first.get(), "nobody");
        EXPECT_EQ(second.get(), "nobody");
        EXPECT_LT(Clock::now() - begin, kLong / 2);
        EXPECT_EQ(m_client.ask("well?"), "well?");
        EXPECT_TRUE(m_owner.connect(m_socket));
        EXPECT_EQ(m_owner.hello("owner"), "owner") << "its name is free again";
    }
}

TEST_F(PeerCallsTest, ManyThreadsAskAtTheSameTime) {
    std::thread owner([this] {
        for (int i = 0; i < 8 * 50; ++i) {
            const auto frame = m_owner.read();
            ASSERT_TRUE(frame);
            ASSERT_TRUE(m_owner.write(
                FramePeer::frame(FrameKind::eReply, frame->correlation, frame->payload + "!")));
        }
    });
    std::vector<std::future<int>> askers;
    for (int t = 0; t < 8; ++t) {
        askers.push_back(std::async(std::launch::async, [this, t] {
            int right = 0;
            for (int i = 0; i < 50; ++i) {
                const std::string text = std::to_string(t) + "." + std::to_string(i);
                right += askOwner(text, kLong) == "owner said " + text + "!" ? 1 : 0;
            }
            return right;
        }));
    }
    for (auto& asker : askers) {
        EXPECT_EQ(asker.get(), 50);
    }
    owner.join();
}

TEST_F(PeerCallsTest, NotificationsOfTheMessageThreadLeaveBeforeItWaits) {
    m_asking.onMessage = [this](const std::string& text) {
        m_loop.calls().notify({"client", "vireo_text", "AgentIfc"}, "news");
        return askOwner(text, kLong);
    };
    FramePeer asker(m_socket);
    EXPECT_EQ(asker.hello("asker"), "asker");
    sendAsk(asker, 1, "what?");
    const auto news = m_client.read();
    ASSERT_TRUE(news);
    EXPECT_EQ(news->kind, FrameKind::eNotification);
    EXPECT_EQ(news->payload, "news");
    answer(question(), "this");
    EXPECT_EQ(reply(asker), "owner said this");
}

TEST_F(PeerCallsTest, AnAnswerThatCameInTimeCountsThoughTheThreadWasKept) {
    FramePeer silent(m_socket);
    EXPECT_EQ(silent.hello("silent"), "silent");
    m_asking.onMessage = [this](const std::string& text) {
        std::string reply;
        return text == "nested"
                   ? std::to_string(m_loop.calls().call({"silent", "vireo_text", "AgentIfc"}, "?",
                                                        milliseconds(60), reply))
                   : askOwner(text, milliseconds(50));
    };
    sendAsk(m_client, 1, "outer");
    const ReceivedFrame asked = question();
    // The nested question takes longer than the outer one may; the answer lies behind it.
    EXPECT_TRUE(
        m_owner.write(FramePeer::frame(FrameKind::eRequest, 2, "nested", "vireo_rpc", "AskIfc") +
                      FramePeer::frame(FrameKind::eReply, asked.correlation, "in time")));
    EXPECT_EQ(reply(m_client), "owner said in time");
}

TEST_F(PeerCallsTest, AnAskedPeerThatTakesNoRepliesIsNotServedWithoutEnd) {
    m_asking.onMessage = [this](const std::string& text) {
        return askOwner(text, milliseconds(300));
    };
    sendAsk(m_client, 1, "outer");
    question();
    std::string requests;
    for (std::uint32_t i = 0; i < 64; ++i) {
        requests += FramePeer::frame(FrameKind::eRequest, i, "big:1000000");
    }
    EXPECT_TRUE(m_owner.write(requests));
    EXPECT_EQ(reply(m_client), "nobody");
    EXPECT_LT(m_invoker.bigHandled, 8) << "the others wait until it reads";
    for (std::uint32_t i = 0; i < 64; ++i) {
        const auto big = m_owner.read();
        ASSERT_TRUE(big);
        EXPECT_EQ(big->correlation, i);
    }
}

}  // namespace
}  // namespace vireo::test
