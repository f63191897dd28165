#include <chrono>
#include <future>

#include "StormPeer.h"
#include "support/AgentPeer.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// What is done soon on a phone that waits long for owners was not done by its time-out.
constexpr milliseconds kLongTimeout{60000};
constexpr std::chrono::seconds kAtOnce{5};

class OwnersFixture : public ::testing::Test {
protected:
    void start(milliseconds answerTimeout) {
        phone.start({"--answer-timeout-ms", std::to_string(answerTimeout.count())});
        client = phone.connect();
        client->setTimeout(std::chrono::seconds(100));
    }

    RunningPhone phone{RunningPhone::Prepared{}};
    std::unique_ptr<LocalMgmtClient> client;
};

class Owners : public OwnersFixture {
protected:
    Owners() { start(kLongTimeout); }
};

TEST_F(Owners, AWriteIsRefusedItemByItemAndObserversHearOfTheAcceptedOnes) {
    AgentPeer bulk(phone, "bulk");
    bulk.whenWritten = [](ManageableData& record) {
        record.addRejectReason("host-name", "//*", "too long");
        record.addRejectReason("host-name", "//*", "and in use");
        return false;
    };
    ASSERT_TRUE(bulk.own("NetworkMgmtId", true));
    ASSERT_EQ(client->setPhoneBusyStatus(1), CallStatus::eDone);
    AgentPeer observer(phone, "observer");
    ASSERT_TRUE(observer.observe("all-data"));
    const ItemAnswer answer = writeItems(
        *client,
        {"language=de", "host-name=desk", "dot1x-identity=me", "sip-realm=r", "dns-domain=home"});
    EXPECT_FALSE(answer.result);
    EXPECT_EQ(answer.refusals, (Words{"dot1x-identity: Service not registered",
                                      "sip-realm: Change not allowed: Phone is busy!",
                                      "host-name: too long", "host-name: and in use"}));
    EXPECT_EQ(observer.takeTranscript(), (Words{"told language=de", "told dns-domain=home"}));
}

/// An owner that announces, reads, observes and writes before it answers; once as a bulk owner.
class OwnersThatCallBack : public Owners, public ::testing::WithParamInterface<bool> {
protected:
    OwnersThatCallBack() {
        caller.whenWritten = [this](ManageableData&) {
            if (++m_depth == 1) {
                callBack();
            }
            --m_depth;
            return true;
        };
        EXPECT_TRUE(caller.own("NetworkMgmtId", GetParam()));
        EXPECT_TRUE(other.observe("vlan-id") && other.observe("language"));
        EXPECT_TRUE(other.own("TelephonyMgmtId", true));
    }
    void TearDown() override {
        EXPECT_LT(steady_clock::now() - m_start, kAtOnce);
        EXPECT_EQ(readItems(*client, {"language"}).items, Words{"language=de"});
        EXPECT_TRUE(writeItems(*client, {"phone-name=mine"}).result);
        EXPECT_EQ(caller.waitForTranscript(1), Words{"told phone-name=mine"});
    }

    AgentPeer caller{phone, "caller"};
    // What the service asks and tells it comes in one stream, so it knows what came first. Its
    // batch is behind the caller's.
    AgentPeer other{phone, "other"};

private:
    void callBack() {
        EXPECT_EQ(announceItems(caller.client(), {"vlan-id=7"}), 1);
        EXPECT_EQ(readItems(caller.client(), {"country", "call-waiting"}).items,
                  (Words{"country=GB", "call-waiting=call-waiting of other"}));
        EXPECT_TRUE(caller.observe("phone-name"));
        EXPECT_TRUE(writeItems(caller.client(), {"language=de"}).result);
        EXPECT_TRUE(writeItems(caller.client(), {"dns-domain=nested"}).result);
    }

    int m_depth = 0;
    const steady_clock::time_point m_start = steady_clock::now();
};

TEST_P(OwnersThatCallBack, AreServedWhileOneItemIsWritten) {
    EXPECT_TRUE(writeItems(*client, {"host-name=desk"}).result);
    EXPECT_EQ(caller.takeTranscript(), (Words{"set host-name=desk", "set dns-domain=nested"}));
    EXPECT_EQ(other.waitForTranscript(3),
              (Words{"told vlan-id=7", "get call-waiting", "told language=de"}));
}

TEST_P(OwnersThatCallBack, AreServedWhileManyItemsAreWrittenAndObserversHearOfItBehindTheBatches) {
    EXPECT_TRUE(
        writeItems(*client, {"host-name=hall", "call-waiting=1", "do-not-disturb=2"}).result);
    EXPECT_EQ(caller.takeTranscript(), (Words{"set host-name=hall", "set dns-domain=nested"}));
    EXPECT_EQ(other.waitForTranscript(4),
              (Words{"get call-waiting", "set call-waiting=1 do-not-disturb=2", "told vlan-id=7",
                     "told language=de"}));
}

INSTANTIATE_TEST_SUITE_P(All, OwnersThatCallBack, ::testing::Bool(),
                         [](const auto& bulk) { return bulk.param ? "Bulk" : "Single"; });

/// A phone with an owner that does not answer.
class OwnerFaults : public OwnersFixture {
protected:
    void startHanging() {
        hanging = std::make_unique<ChildProcess>(phone.ctlCommand(
            {"--channel", "hanging", "agent", "NetworkMgmtId", "--bulk", "--hang"}));
        expectAsked("serving NetworkMgmtId as hanging");
    }
    void expectAsked(const char* expected) const {
        std::string line;
        EXPECT_TRUE(hanging->readLine(line));
        EXPECT_EQ(line, expected);
    }

    std::unique_ptr<ChildProcess> hanging;
};

TEST_F(OwnerFaults, AReadGoesOnWithoutAHangingOwnerAfterOneTimeout) {
    constexpr milliseconds kTimeout{1500};
    start(kTimeout);
    startHanging();
    AgentPeer bulk(phone, "bulk");
    AgentPeer single(phone, "single");
    ASSERT_TRUE(bulk.own("TelephonyMgmtId", true));
    ASSERT_TRUE(single.own("MediaMgmtId", false));
    const Words tags{"host-name", "handset-volume", "dns-domain", "call-waiting"};
    auto start = steady_clock::now();
    const ItemAnswer answer = readItems(*client, tags);
    const auto taken = steady_clock::now() - start;
    EXPECT_FALSE(answer.result);
    EXPECT_EQ(answer.items, (Words{"host-name", "handset-volume=handset-volume of single",
                                   "dns-domain", "call-waiting=call-waiting of bulk"}));
    expectAsked("get host-name dns-domain");
    EXPECT_GE(taken, kTimeout);
    EXPECT_LT(taken, 2 * kTimeout);
    EXPECT_TRUE(readItems(*client, {"language"}).result);

    start = steady_clock::now();
    EXPECT_EQ(readItems(*client, tags).items, answer.items);
    EXPECT_LT(steady_clock::now() - start, kTimeout) << "it is not waited for a second time";
}

TEST_F(OwnerFaults, ABatchThatIsSwallowedIsRefusedAndNobodyHearsOfIt) {
    start(milliseconds(300));
    startHanging();
    AgentPeer observer(phone, "observer");
    ASSERT_TRUE(observer.observe("all-data"));
    const Words assignments{"host-name=desk", "language=de", "dns-domain=home"};
    const Words refusals{"host-name: unknown", "dns-domain: unknown"};
    ItemAnswer answer = writeItems(*client, assignments);
    EXPECT_FALSE(answer.result);
    EXPECT_EQ(answer.refusals, refusals);
    expectAsked("set host-name = desk");
    expectAsked("set dns-domain = home");
    EXPECT_EQ(observer.takeTranscript(), Words{"told language=de"});

    // What was locked for the write is free again, and an owner that is gone is no different.
    ASSERT_TRUE(observer.observe("country"));
    hanging->kill(SIGKILL);
    hanging->finish();
    answer = writeItems(*client, {"host-name=desk", "country=AT", "dns-domain=home"});
    EXPECT_FALSE(answer.result);
    EXPECT_EQ(answer.refusals, refusals);
    EXPECT_EQ(observer.takeTranscript(), (Words{"told country=AT", "told country=AT"}));
}

TEST_F(OwnerFaults, TheWaitForAnOwnerEndsWhenItIsKilled) {
    start(kLongTimeout);
    startHanging();
    const auto expectEndsAtOnce = [&](std::future<ItemAnswer> call, const Words& asked) {
        for (const std::string& line : asked) {
            expectAsked(line.c_str());
        }
        const auto start = steady_clock::now();
        hanging->kill(SIGKILL);
        EXPECT_FALSE(call.get().result);
        EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(1));
        hanging->finish();
    };
    expectEndsAtOnce(
        std::async(std::launch::async, readItems, std::ref(*client), Words{"host-name"}),
        {"get host-name"});
    startHanging();
    expectEndsAtOnce(std::async(std::launch::async, writeItems, std::ref(*client),
                                Words{"host-name=a", "dns-domain=b"}),
                     {"set host-name = a", "set dns-domain = b"});
    const auto start = steady_clock::now();
    EXPECT_FALSE(readItems(*client, {"host-name"}).result) << "nobody is there";
    EXPECT_LT(steady_clock::now() - start, kAtOnce);
    EXPECT_TRUE(readItems(*client, {"language"}).result);
}

/// An owner that answers with any bytes.
class OddOwner : public StormPeer {
public:
    OddOwner(const RunningPhone& phone, const char* managementId) : StormPeer(phone) {
        Method reply;
        const std::string text = send(rpcText(methodWith(
            "registerManagementIdentity", "managementId", Parameter::eIn, managementId)));
        EXPECT_TRUE(RpcAdapter::decodeText(text, reply) &&
                    reply.getBoolParameter("result", Parameter::eOut));
    }

    /// The next request of the service.
    ReceivedFrame takeRequest() {
        const auto request = read();
        EXPECT_TRUE(request && request->kind == FrameKind::eRequest);
        return request.value_or(ReceivedFrame{});
    }
    bool answer(const ReceivedFrame& request, const std::string& payload) {
        return write(FramePeer::frame(FrameKind::eReply, request.correlation, payload,
                                      request.protocol, request.interfaceName));
    }
};

TEST_F(OwnerFaults, AnOddReplyIsTakenOnlyWhereItIsWhole) {
    start(kLongTimeout);
    OddOwner owner(phone, "NetworkMgmtId");
    const auto text = [](const Words& items) { return recordOf(items).serialize(); };
    const std::string plain = text({"host-name=desk"});
    const std::string address = text({"host-name=http://a:b"});
    const struct {
        std::string payload;
        bool result;
        Words items;
    } rows[] = {
        {"getData:1;" + plain, true, {"host-name=desk"}},
        {"1;" + plain, true, {"host-name=desk"}},
        {"setData:1;" + plain, true, {"host-name=desk"}},
        {":1;" + plain, true, {"host-name=desk"}},
        {"getData:1;" + address, true, {"host-name=http://a:b"}},
        {"1;" + address, false, {"host-name"}},  // the first colon is taken for the command's
        {"getData:1;" + text({"host-name=desk", "language=stolen"}), true, {"host-name=desk"}},
        {"getData:0;" + plain, false, {"host-name"}},
        {"getData:2;" + plain, false, {"host-name"}},
        {"getData:1;", false, {"host-name"}},
        {"getData:1;" + plain.substr(0, plain.size() - 3), false, {"host-name"}},
        {"getData:", false, {"host-name"}},
        {"garbage", false, {"host-name"}},
        {std::string("\xff\0:\0", 4), false, {"host-name"}},
        {"", false, {"host-name"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.payload);
        auto call = std::async(std::launch::async, readItems, std::ref(*client),
                               Words{"host-name", "country"});
        EXPECT_TRUE(owner.answer(owner.takeRequest(), row.payload));
        const ItemAnswer answer = call.get();
        EXPECT_EQ(answer.result, row.result);
        EXPECT_EQ(answer.record.rootIds(), (Words{"host-name", "country"}));
        EXPECT_EQ(answer.items.front(), row.items.front());
        EXPECT_EQ(answer.value("country"), "GB");
        EXPECT_EQ(answer.value("language"), "none") << "it was not asked for";
    }
}

TEST_F(OwnerFaults, ALateReplyIsNeverTakenForTheNextOne) {
    start(milliseconds(300));
    OddOwner owner(phone, "NetworkMgmtId");
    EXPECT_FALSE(readItems(*client, {"host-name"}).result);
    const ReceivedFrame first = owner.takeRequest();
    const std::string late = "getData:1;" + recordOf({"host-name=late"}).serialize();
    EXPECT_TRUE(owner.answer(first, late));
    EXPECT_TRUE(owner.isServed()) << "the late reply has been read";
    auto call = std::async(std::launch::async, readItems, std::ref(*client), Words{"host-name"});
    const ReceivedFrame second = owner.takeRequest();
    EXPECT_NE(second.correlation, first.correlation);
    EXPECT_TRUE(owner.answer(first, late));
    EXPECT_TRUE(owner.answer(second, "getData:1;" + recordOf({"host-name=fresh"}).serialize()));
    EXPECT_EQ(call.get().items, Words{"host-name=fresh"});
}

}  // namespace
}  // namespace vireo::test
