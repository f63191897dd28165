#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
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

using std::chrono::milliseconds;

/// Answers with functions of the test; what it was told is put down in order.
class FunctionAgent : public MgmtAgentIfc {
public:
    bool setData(ManageableData& record) override { return read(record); }
    bool getData(ManageableData& record) override { return read(record); }
    bool manageableDataChanged(ManageableData& record) override {
        told.push_back(record.getRootId());
        whenTold(record.getRootId());
        return true;
    }
    bool resetUserData() override {
        told.emplace_back("reset");
        return true;
    }

    std::function<bool(ManageableData&)> read = [](ManageableData& record) {
        return record.populate(record.getRootId(), "owned");
    };
    std::function<void(const std::string&)> whenTold = [](const std::string&) {};
    std::vector<std::string> told;
};

ManageableData recordOf(const std::string& tag) {
    ManageableData record;
    record.setRootId(tag, nullptr);
    return record;
}

std::string question(const std::string& tag) {
    return "getData:" + recordOf(tag).serialize();
}

std::string answer(const std::string& tag, const std::string& value) {
    ManageableData record = recordOf(tag);
    record.populate(tag, value);
    return "getData:1;" + record.serialize();
}

std::string change(const std::string& tag) {
    return "manageableDataChanged:" + recordOf(tag).serialize();
}

bool isReady(const LocalMgmtClient& client, milliseconds timeout) {
    pollfd waited{client.pollDescriptor(), POLLIN, 0};
    return ::poll(&waited, 1, static_cast<int>(timeout.count())) > 0;
}

TEST(Serving, AnswersAndIsToldWhileACallWaitsAndDropsWhatIsForNobody) {
    ScriptedPeer peer([](PeerStream& stream) {
        stream.send(FrameKind::eNotification, 0, "before any call");
        const auto call = stream.read();
        ASSERT_TRUE(call);
        stream.send(FrameKind::eNotification, 0, "news");
        stream.send(FrameKind::eWelcome, 0, "again");
        stream.send(FrameKind::eReply, 4711, "nobody's");
        stream.sendToAgent(FrameKind::eNotification, 0, change("a"));
        // The service numbers its requests by itself, also like the call that waits.
        EXPECT_EQ(stream.askAgent(call->correlation, question("x")), answer("x", "owned"));
        EXPECT_EQ(stream.askAgent(5, "getData:<record"), "getData:0;<record></record>");
        stream.sendToAgent(FrameKind::eNotification, 0, "resetUserData:");
        stream.send(FrameKind::eRequest, 6, question("x"));  // not for the agent
        const auto nothing = stream.read();
        ASSERT_TRUE(nothing);
        EXPECT_EQ(nothing->payload, "");
        stream.send(FrameKind::eReply, call->correlation, "mine");
    });
    FunctionAgent agent;
    const auto client = connectTo(peer, &agent);
    EXPECT_EQ(ask(*client, "q"), "mine");
    EXPECT_EQ(agent.told, (std::vector<std::string>{"a", "reset"}));
    EXPECT_EQ(client->channelName(), "client-1");
}

TEST(Serving, AnAgentMayCallBackAndBeAskedAgainAtAnyDepthUpToSixteen) {
    constexpr int kDepth = 20;
    ScriptedPeer peer([](PeerStream& stream) {
        std::vector<std::uint32_t> calls;
        for (std::uint32_t depth = 0; depth <= kDepth; ++depth) {
            const auto call = stream.read();
            ASSERT_TRUE(call);
            if (call->kind == FrameKind::eReply) {
                EXPECT_EQ(call->payload, "") << "too deep";
                EXPECT_EQ(depth, 17U);
                break;
            }
            EXPECT_EQ(call->payload, "x" + std::to_string(depth));
            calls.push_back(call->correlation);
            stream.sendToAgent(FrameKind::eRequest, depth, question("x"));
        }
        for (std::uint32_t depth = 16; !calls.empty(); --depth) {
            stream.send(FrameKind::eReply, calls.back(), "r" + std::to_string(depth));
            calls.pop_back();
            if (depth > 0) {
                const auto reply = stream.read();
                ASSERT_TRUE(reply);
                EXPECT_EQ(reply->correlation, depth - 1);
                EXPECT_EQ(reply->payload, answer("x", "r" + std::to_string(depth)));
            }
        }
    });
    FunctionAgent agent;
    const auto client = connectTo(peer, &agent);
    int depth = 0;
    agent.read = [&](ManageableData& record) {
        EXPECT_EQ(client->serve(kPatience), CallStatus::eTimedOut) << "it is serving already";
        const std::string reply = ask(*client, "x" + std::to_string(++depth));
        return record.populate("x", reply);
    };
    EXPECT_EQ(ask(*client, "x0"), "r0");
}

TEST(Serving, TheReplyOfAnOuterCallMayComeWhileAnInnerOneWaits) {
    ScriptedPeer peer([](PeerStream& stream) {
        const auto outer = stream.read();
        ASSERT_TRUE(outer);
        stream.sendToAgent(FrameKind::eRequest, 1, question("x"));
        const auto inner = stream.read();
        ASSERT_TRUE(inner);
        stream.send(FrameKind::eReply, outer->correlation, "outer");
        stream.send(FrameKind::eReply, inner->correlation, "inner");
        const auto late = stream.read();
        ASSERT_TRUE(late);
        EXPECT_EQ(late->payload, answer("x", "inner"));
        stream.reply("next");
    });
    FunctionAgent agent;
    const auto client = connectTo(peer, &agent);
    agent.read = [&](ManageableData& record) {
        return record.populate("x", ask(*client, "inner?"));
    };
    EXPECT_EQ(ask(*client, "outer?"), "outer");
    EXPECT_EQ(ask(*client, "next?"), "next");
}

TEST(Serving, NotificationsComeInOrderAndNeverWithinAnotherMessage) {
    std::vector<std::string> expected;
    ScriptedPeer peer([&expected](PeerStream& stream) {
        std::string burst;
        for (int i = 0; i < 500; ++i) {
            expected.push_back("n" + std::to_string(i));
            burst += agentFrame(FrameKind::eNotification, 0, change(expected.back()));
        }
        stream.write(burst);
        while (const auto call = stream.read()) {
            stream.send(FrameKind::eReply, call->correlation, "r");
        }
    });
    FunctionAgent agent;
    const auto client = connectTo(peer, &agent);
    int depth = 0;
    agent.whenTold = [&](const std::string&) {
        EXPECT_EQ(++depth, 1);
        ask(*client, "q");
        --depth;
    };
    while (agent.told.size() < 500) {
        ASSERT_EQ(client->serve(kPatience), CallStatus::eDone);
    }
    EXPECT_EQ(agent.told, expected);
}

TEST(Serving, TheDescriptorSaysWhenThereIsSomethingToDoAlsoWhenACallHasReadItAlready) {
    std::promise<void> go;
    ScriptedPeer peer([&go](PeerStream& stream) {
        const auto call = stream.read();
        ASSERT_TRUE(call);
        // In one piece, so that the call takes in what is behind its reply.
        stream.write(frame(FrameKind::eReply, call->correlation, "r") +
                     agentFrame(FrameKind::eNotification, 0, change("a")));
        go.get_future().wait();
        stream.sendToAgent(FrameKind::eNotification, 0, change("b"));
        EXPECT_EQ(stream.askAgent(1, question("x")), answer("x", "owned"));
        stream.close();
    });
    FunctionAgent agent;
    const auto client = connectTo(peer, &agent);
    EXPECT_FALSE(isReady(*client, milliseconds(0)));
    EXPECT_EQ(client->serve(milliseconds(0)), CallStatus::eTimedOut);
    EXPECT_EQ(ask(*client, "q"), "r");
    EXPECT_TRUE(isReady(*client, milliseconds(0)));
    EXPECT_EQ(client->serve(milliseconds(0)), CallStatus::eDone);
    EXPECT_EQ(agent.told, std::vector<std::string>{"a"});
    EXPECT_FALSE(isReady(*client, milliseconds(0)));
    go.set_value();
    CallStatus status = CallStatus::eDone;
    while (status != CallStatus::eDisconnected && isReady(*client, kPatience)) {
        status = client->serve(milliseconds(0));
    }
    EXPECT_EQ(status, CallStatus::eDisconnected);
    EXPECT_EQ(agent.told, (std::vector<std::string>{"a", "b"}));
    EXPECT_TRUE(isReady(*client, milliseconds(0))) << "the end stays to be seen";
}

TEST(Serving, FinishesALargeAnswerThatTheSocketDidNotTakeAtOnce) {
    const std::string large(3U << 20U, 'v');
    ScriptedPeer peer([&large](PeerStream& stream) {
        // The first answer fills the socket before the second question is read.
        stream.sendToAgent(FrameKind::eRequest, 1, question("x"));
        stream.sendToAgent(FrameKind::eRequest, 2, question("x"));
        for (const std::uint32_t correlation : {1U, 2U}) {
            const auto reply = stream.read();
            ASSERT_TRUE(reply);
            EXPECT_EQ(reply->correlation, correlation);
            EXPECT_TRUE(reply->payload == answer("x", large));
        }
    });
    FunctionAgent agent;
    agent.read = [&large](ManageableData& record) { return record.populate("x", large); };
    const auto client = connectTo(peer, &agent);
    while (isReady(*client, kPatience) &&
           client->serve(milliseconds(0)) != CallStatus::eDisconnected) {
    }
}

TEST(Serving, AnAnswerThatNoFrameCarriesIsAnEmptyOne) {
    ScriptedPeer peer([](PeerStream& stream) {
        EXPECT_EQ(stream.askAgent(1, question("x")), "");
        EXPECT_EQ(stream.askAgent(2, question("y")), answer("y", "small"));
    });
    FunctionAgent agent;
    agent.read = [](ManageableData& record) {
        const std::string tag = record.getRootId();
        return record.populate(tag, tag == "y" ? "small" : std::string(5U << 20U, 'v'));
    };
    const auto client = connectTo(peer, &agent);
    serveToTheEnd(*client);
}

TEST(Serving, StopsForGoodEvenBeforeItHasBegun) {
    ScriptedPeer peer([](PeerStream& stream) {
        EXPECT_EQ(stream.askAgent(1, question("x")), answer("x", "owned"));
        EXPECT_FALSE(stream.read());
    });
    FunctionAgent agent;
    const auto client = connectTo(peer, &agent);
    agent.read = [&](ManageableData& record) {
        client->stopServing();
        return record.populate("x", "owned");
    };
    EXPECT_EQ(client->serveUntilStopped(), CallStatus::eDone);
    EXPECT_EQ(client->serveUntilStopped(), CallStatus::eDone);
    EXPECT_TRUE(client->startServing()) << "a thread that ends at once";
}

// What the thread sanitizer should see: a thread that serves, threads that call, and an agent that
// calls back.
TEST(Serving, ManyThreadsCallWhileOneServes) {
    constexpr int kThreads = 3;
    constexpr int kCalls = 100;
    ScriptedPeer peer([](PeerStream& stream) {
        std::uint32_t asked = 0;
        while (const auto received = stream.read()) {
            if (received->kind == FrameKind::eReply) {
                EXPECT_EQ(received->payload, answer("x", "inner"));
                continue;
            }
            // An inner call brings no further question, or there would be no end.
            if (received->payload != "inner") {
                stream.sendToAgent(FrameKind::eNotification, 0, change("a"));
                stream.sendToAgent(FrameKind::eRequest, ++asked, question("x"));
            }
            stream.send(FrameKind::eReply, received->correlation, received->payload);
        }
    });
    FunctionAgent agent;
    const auto client = connectTo(peer, &agent);
    agent.read = [&](ManageableData& record) {
        return record.populate("x", ask(*client, "inner"));
    };
    std::promise<void> everyoneTold;
    agent.whenTold = [&](const std::string&) {
        if (agent.told.size() == kThreads * kCalls) {
            everyoneTold.set_value();
        }
    };
    ASSERT_TRUE(client->startServing());
    EXPECT_TRUE(client->startServing());
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&client, t] {
            for (int i = 0; i < kCalls; ++i) {
                const std::string sent = std::to_string(t) + ":" + std::to_string(i);
                EXPECT_EQ(ask(*client, sent), sent);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(everyoneTold.get_future().wait_for(kPatience), std::future_status::ready);
}

}  // namespace
}  // namespace vireo
