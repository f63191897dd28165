#include <optional>

#include "support/AgentPeer.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

class Observers : public ::testing::Test {
protected:
    bool write(const Words& assignments) const { return writeItems(*client, assignments).result; }

    RunningPhone phone;
    std::unique_ptr<LocalMgmtClient> client = phone.connect();
};

TEST_F(Observers, OneThatAsksTwiceIsToldTwiceUntilItHasStoppedTwice) {
    AgentPeer a(phone, "a");
    AgentPeer b(phone, "b");
    const auto expectTold = [&](const char* value, std::size_t timesA, std::size_t timesB) {
        SCOPED_TRACE(value);
        EXPECT_TRUE(write({std::string("language=") + value}));
        const std::string line = std::string("told language=") + value;
        EXPECT_EQ(a.takeTranscript(), Words(timesA, line));
        EXPECT_EQ(b.takeTranscript(), Words(timesB, line));
    };
    EXPECT_TRUE(a.observe("language"));
    EXPECT_TRUE(b.observe("language"));
    EXPECT_TRUE(a.observe("language"));
    expectTold("v1", 2, 1);
    EXPECT_TRUE(a.stopObserving("language"));
    expectTold("v2", 1, 1);
    EXPECT_TRUE(b.observe("language"));
    EXPECT_TRUE(a.stopObserving("language"));
    expectTold("v3", 0, 2);
    EXPECT_TRUE(a.stopObserving("language")) << "there is nothing to stop, and that is no error";
    expectTold("v4", 0, 2);
    EXPECT_TRUE(b.stopObserving("language"));
    EXPECT_TRUE(b.stopObserving("language"));
    EXPECT_TRUE(a.observe("language"));
    expectTold("v5", 1, 0);
    EXPECT_FALSE(a.observe("nothing-known"));
    EXPECT_FALSE(a.stopObserving("nothing-known"));
}

TEST_F(Observers, OneWriteIsToldInOneRecordOrInOnePerItem) {
    AgentPeer a(phone, "a");
    AgentPeer b(phone, "b");
    AgentPeer c(phone, "c");
    for (const char* tag : {"key-label-1", "language", "country"}) {
        ASSERT_TRUE(a.observe(tag, true));
        ASSERT_TRUE(b.observe(tag));
    }
    ASSERT_TRUE(c.observe("all-data"));
    ASSERT_TRUE(c.observe("language"));
    EXPECT_TRUE(write({"language=de", "country=AT", "key-label-1=Home"}));
    EXPECT_EQ(a.takeTranscript(), Words{"told language=de country=AT key-label-1=Home"});
    EXPECT_EQ(b.takeTranscript(),
              (Words{"told language=de", "told country=AT", "told key-label-1=Home"}));
    EXPECT_EQ(c.takeTranscript(), (Words{"told language=de", "told language=de", "told country=AT",
                                         "told key-label-1=Home"}));
    EXPECT_EQ(announceItems(*client, {"country=CH", "language=fr"}), 1 + 2 + 3);
    EXPECT_EQ(a.takeTranscript(), Words{"told country=CH language=fr"});
}

TEST_F(Observers, OneThatCameBackUnderItsNameIsStillTold) {
    std::optional<AgentPeer> observer;
    observer.emplace(phone, "observer");
    ASSERT_TRUE(observer->observe("language"));
    EXPECT_TRUE(write({"language=v1"}));
    EXPECT_EQ(observer->takeTranscript(), Words{"told language=v1"});
    observer.reset();
    EXPECT_TRUE(write({"language=v2"})) << "an observer that is away disturbs nobody";
    observer.emplace(phone, "observer");
    EXPECT_TRUE(write({"language=v3"}));
    EXPECT_EQ(observer->takeTranscript(), Words{"told language=v3"});
}

TEST_F(Observers, AWatchThatWasKilledLeavesNothingToTheNextOneOfItsName) {
    Words command{VIREOCTL,  "--socket", phone.socket(), "--channel",
                  "watcher", "watch",    "language",     "audio-volumes"};
    std::optional<ChildProcess> watch;
    std::string line;
    const auto start = [&] {
        watch.emplace(command);
        EXPECT_TRUE(watch->readErrorLine(line));
        EXPECT_EQ(line, "vireoctl: watching as watcher");
    };
    const auto expectLine = [&](const char* expected) {
        EXPECT_TRUE(watch->readLine(line));
        EXPECT_EQ(line, expected);
    };
    start();
    EXPECT_TRUE(write({"language=v1", "ringer-volume=3"}));
    expectLine("language = v1");
    expectLine("ringer-volume = 3");
    watch->kill(SIGKILL);
    watch->finish();
    EXPECT_TRUE(write({"language=v2"}));
    start();
    EXPECT_TRUE(write({"language=v3"}));
    EXPECT_TRUE(write({"ringer-volume=4"}));
    EXPECT_TRUE(write({"language=v4"}));
    expectLine("language = v3");
    expectLine("ringer-volume = 4");
    expectLine("language = v4");
    watch->kill(SIGKILL);
    watch->finish();
    command.pop_back();  // the collection
    command.push_back("country");
    start();
    EXPECT_TRUE(write({"ringer-volume=5", "country=AT"}));
    expectLine("country = AT");
    EXPECT_TRUE(write({"ringer-volume=6", "language=v5"}));
    expectLine("language = v5");
    watch->kill(SIGTERM);
    EXPECT_EQ(watch->finish().exitCode, 0);
    EXPECT_EQ(announceItems(*client, {"ringer-volume=7", "country=CH"}), 0)
        << "also what it did not ask for";
}

}  // namespace
}  // namespace vireo::test
