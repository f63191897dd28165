#include <deque>
#include <future>
#include <thread>
#include <utility>

#include "LoopFixture.h"
#include "messages/PeerCalls.h"

namespace vireo::test {
namespace {

/// Postpones the answers to what starts with "later", and gives them as "TEXT/NUMBER IN THE TURN";
/// "later lost" is given none, "later ask" after "owner" was asked. "hold" waits for the test,
/// "ask" asks the peer "owner", "meet" lets another thread ask "first" and come across what it
/// sent.
class PostponingInvoker : public Invoker {
public:
    explicit PostponingInvoker(PeerCalls& calls) : m_calls(calls) {}

    void initInvoker(FrameworkContext*) override {}
    void handleMessage(Executable*, const char* message, int length,
                       InvokerResponse* response) override {
        const std::string text(message, static_cast<std::size_t>(length));
        if (text.starts_with("later")) {
            m_postponed.emplace_back(response->postpone(), text);
            return;
        }
        std::string reply = text;
        if (text == "hold") {
            isHeld.set_value();
            release.get_future().wait();
        } else if (text == "ask") {
            ask("owner", reply);
        } else if (text == "meet") {
            std::thread([&] { ask("first", reply); }).join();
        }
        answer(*response, reply);
    }
    void endTurn(Executable*) override {
        const std::size_t count = m_postponed.size();
        while (!m_postponed.empty()) {
            const auto [response, text] = std::move(m_postponed.front());
            m_postponed.pop_front();
            std::string reply = text + "/" + std::to_string(count);
            if (text == "later ask") {
                ask("owner", reply);
            }
            if (text != "later lost") {
                answer(*response, reply);
            }
        }
    }

    std::promise<void> isHeld;
    std::promise<void> release;

private:
    void ask(std::string_view channel, std::string& reply) {
        m_calls.call({channel, "vireo_text", "AgentIfc"}, "?", std::chrono::seconds(20), reply);
    }
    static void answer(InvokerResponse& response, const std::string& text) {
        response.setPayload(text.data(), static_cast<int>(text.size()));
        response.send();
    }

    PeerCalls& m_calls;
    std::deque<std::pair<std::shared_ptr<InvokerResponse>, std::string>> m_postponed;
};

class PostponedReplyTest : public LoopFixture {
protected:
    PostponedReplyTest() {
        m_loop.serve("LaterIfc", m_postponing, m_executable);
        start();
        const std::pair<FramePeer*, const char*> peers[] = {
            {&m_first, "first"}, {&m_second, "second"}, {&m_owner, "owner"}};
        for (const auto& [peer, name] : peers) {
            EXPECT_TRUE(peer->connect(m_socket));
            EXPECT_EQ(peer->hello(name), name);
        }
    }
    ~PostponedReplyTest() override { stop(); }

    static std::string request(std::uint32_t id, const std::string& text) {
        return FramePeer::frame(FrameKind::eRequest, id, text, "vireo_rpc", "LaterIfc");
    }
    static std::string next(FramePeer& peer) {
        const auto frame = peer.read();
        return frame ? std::to_string(frame->correlation) + " " + frame->payload : "nothing";
    }
    /// Keeps the message thread busy until `release`, so that what is written meanwhile arrives
    /// together.
    void hold() {
        EXPECT_TRUE(m_owner.write(request(1, "hold")));
        m_postponing.isHeld.get_future().wait();
    }
    void release() {
        m_postponing.release.set_value();
        EXPECT_EQ(next(m_owner), "1 hold");
    }

    PostponingInvoker m_postponing{m_loop.calls()};
    FramePeer m_first;
    FramePeer m_second;
    FramePeer m_owner;
};

TEST_F(PostponedReplyTest, PeersThatAskTogetherAreAnsweredTogetherEachInItsOrder) {
    hold();
    EXPECT_TRUE(m_first.write(request(1, "now") + request(2, "later a") + request(3, "later b") +
                              request(4, "then")));
    EXPECT_TRUE(m_second.write(request(1, "later c")));
    release();
    EXPECT_EQ(next(m_first), "1 now");
    EXPECT_EQ(next(m_first), "2 later a/2");
    EXPECT_EQ(next(m_first), "3 later b/1") << "it waited for the one before";
    EXPECT_EQ(next(m_first), "4 then");
    EXPECT_EQ(next(m_second), "1 later c/2");
}

TEST_F(PostponedReplyTest, APeerThatClosesOrIsForgottenStillGetsItsReply) {
    hold();
    EXPECT_TRUE(m_first.write(request(1, "later lost") + request(2, "now")));
    EXPECT_TRUE(m_second.write(request(1, "later")));
    m_second.endSending();
    release();
    EXPECT_EQ(next(m_first), "1 ") << "one that nobody gives is empty";
    EXPECT_EQ(next(m_first), "2 now");
    EXPECT_EQ(next(m_second), "1 later/2");
    EXPECT_EQ(next(m_second), "nothing");
}

TEST_F(PostponedReplyTest, NoneWaitsWhileTheServiceWaitsForAPeer) {
    hold();
    EXPECT_TRUE(m_first.write(request(1, "later")));
    EXPECT_TRUE(m_second.write(request(1, "ask")));
    release();
    EXPECT_EQ(next(m_first), "1 later/1");
    const auto asked = m_owner.read();
    ASSERT_TRUE(asked);
    EXPECT_TRUE(m_owner.write(request(7, "later inner")));
    EXPECT_EQ(next(m_owner), "7 later inner/1") << "the owner may need it for its answer";
    EXPECT_TRUE(m_owner.write(FramePeer::frame(FrameKind::eReply, asked->correlation, "done")));
    EXPECT_EQ(next(m_second), "1 done");
}

TEST_F(PostponedReplyTest, NoneWaitsWhileAnotherOneIsGiven) {
    hold();
    EXPECT_TRUE(m_first.write(request(1, "later ask")));
    EXPECT_TRUE(m_second.write(request(1, "later")));
    release();
    const auto asked = m_owner.read();
    ASSERT_TRUE(asked);
    EXPECT_EQ(next(m_second), "1 later/1");
    EXPECT_TRUE(m_owner.write(request(7, "later inner")));
    EXPECT_EQ(next(m_owner), "7 later inner/1");
    EXPECT_TRUE(m_owner.write(FramePeer::frame(FrameKind::eReply, asked->correlation, "done")));
    EXPECT_EQ(next(m_first), "1 done");
    EXPECT_TRUE(m_second.write(request(2, "later") + request(3, "now")));
    EXPECT_EQ(next(m_second), "2 later/1");
    EXPECT_EQ(next(m_second), "3 now");
}

TEST_F(PostponedReplyTest, WhatAnotherThreadComesAcrossIsAnsweredBehindIt) {
    hold();
    EXPECT_TRUE(m_first.write(request(1, "later")));
    EXPECT_TRUE(m_second.write(request(1, "meet")));
    release();
    const auto asked = m_first.read();
    ASSERT_TRUE(asked);
    EXPECT_TRUE(m_first.write(request(2, "now") +
                              FramePeer::frame(FrameKind::eReply, asked->correlation, "met")));
    EXPECT_EQ(next(m_second), "1 met");
    EXPECT_EQ(next(m_first), "1 later/1");
    EXPECT_EQ(next(m_first), "2 now");
}

}  // namespace
}  // namespace vireo::test
