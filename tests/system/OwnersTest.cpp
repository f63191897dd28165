#include <chrono>
#include <fstream>

#include "support/AgentPeer.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

using std::chrono::steady_clock;

// Far below the time-out of these phones, and far above what it takes.
constexpr std::chrono::seconds kAtOnce{5};
const Words kLongTimeout{"--answer-timeout-ms", "60000"};

/// A phone that waits long for owners: what is done soon was not done by a time-out.
class Owners : public ::testing::Test {
protected:
    Owners() {
        phone.start(kLongTimeout);
        client = phone.connect();
        client->setTimeout(std::chrono::seconds(100));
    }

    /// One that has this host name.
    std::unique_ptr<ChildProcess> startAgent(const char* hostName) const {
        std::ofstream(phone.file("values")) << "host-name=" << hostName << '\n';
        const Words command{VIREOCTL,        "--socket",  phone.socket(),
                            "--channel",     "net-owner", "agent",
                            "NetworkMgmtId", "--values",  phone.file("values")};
        auto agent = std::make_unique<ChildProcess>(command);
        std::string line;
        EXPECT_TRUE(agent->readLine(line));
        EXPECT_EQ(line, "serving NetworkMgmtId as net-owner");
        return agent;
    }

    RunningPhone phone{RunningPhone::Prepared{}};
    std::unique_ptr<LocalMgmtClient> client;
};

TEST_F(Owners, OneThatDiedFailsAtOnceAndOneThatCameBackUnderItsNameAnswers) {
    auto agent = startAgent("first");
    EXPECT_EQ(readItems(*client, {"host-name"}).value("host-name"), "first");
    EXPECT_TRUE(writeItems(*client, {"host-name=changed"}).result);
    EXPECT_EQ(readItems(*client, {"host-name"}).value("host-name"), "changed");

    agent->kill(SIGKILL);
    agent->finish();
    const auto start = steady_clock::now();
    EXPECT_FALSE(readItems(*client, {"host-name"}).result);
    EXPECT_EQ(writeItems(*client, {"host-name=lost"}).refusals, Words{"host-name: Unknown"});
    EXPECT_LT(steady_clock::now() - start, kAtOnce);

    agent = startAgent("second");
    EXPECT_EQ(readItems(*client, {"host-name"}).value("host-name"), "second");
    agent->kill(SIGTERM);
    const Outcome outcome = agent->finish();
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "get host-name\n");
    EXPECT_NE(outcome.err.find("NetworkMgmtId has an owner already"), std::string::npos)
        << "a second registration answers false: " << outcome.err;
}

TEST_F(Owners, AReadOfAllKindsOfItemsFillsAllButTheUnknownAndAsksABulkOwnerOnce) {
    AgentPeer bulk(phone, "bulk");
    AgentPeer single(phone, "single");
    ASSERT_TRUE(bulk.own("NetworkMgmtId", true));
    ASSERT_TRUE(single.own("MediaMgmtId", false));
    ASSERT_TRUE(writeItems(*client, {"ringer-melody=tune", "key-label-1=Home"}).result);
    ASSERT_EQ(client->setPhoneBusyStatus(2), CallStatus::eDone);

    const Words tags{"host-name",     "ringer-melody",     "hardware-type",  "key-label-1",
                     "nothing-known", "phone-busy-status", "handset-volume", "dns-domain",
                     "rtp-base-port", "ringer-settings"};
    const ItemAnswer answer = readItems(*client, tags);
    EXPECT_FALSE(answer.result) << "for the unknown one";
    EXPECT_EQ(answer.record.rootIds(), tags);
    const std::pair<const char*, const char*> values[] = {
        {"host-name", "host-name of bulk"},
        {"dns-domain", "dns-domain of bulk"},
        {"handset-volume", "handset-volume of single"},
        {"ringer-melody", "tune"},
        {"key-label-1", "Home"},
        {"phone-busy-status", "true"},
        {"nothing-known", "none"},
        {"ringer-melody-external", "melody-2"},
        {"ringer-volume", "5"}};
    for (const auto& [tag, value] : values) {
        EXPECT_EQ(answer.value(tag), value) << tag;
    }
    EXPECT_NE(answer.value("hardware-type"), "none") << "the default of its schema";
    EXPECT_EQ(bulk.takeTranscript(), Words{"get host-name dns-domain"});
    EXPECT_EQ(single.takeTranscript(), (Words{"get handset-volume", "get rtp-base-port"}));

    const ItemAnswer unregistered = readItems(*client, {"call-waiting", "language"});
    EXPECT_TRUE(unregistered.result);
    EXPECT_EQ(unregistered.items, (Words{"call-waiting=true", "language=en"}));
}

TEST_F(Owners, AWriteToAllKindsOfOwnersIsOneCallOfABulkOwnerAndIsKept) {
    AgentPeer bulk(phone, "bulk");
    AgentPeer single(phone, "single");
    ASSERT_TRUE(bulk.own("NetworkMgmtId", true));
    ASSERT_TRUE(single.own("MediaMgmtId", false));
    const Words values{"host-name=desk", "handset-volume=3", "language=de", "dns-domain=home"};
    const ItemAnswer answer = writeItems(*client, values);
    EXPECT_TRUE(answer.result);
    EXPECT_EQ(answer.refusals, Words{});
    EXPECT_EQ(bulk.takeTranscript(), Words{"set host-name=desk dns-domain=home"});
    EXPECT_EQ(single.takeTranscript(), Words{"set handset-volume=3"});
    EXPECT_EQ(readItems(*client, {"host-name", "handset-volume", "language", "dns-domain"}).items,
              values);
}

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

}  // namespace
}  // namespace vireo::test
