#include <algorithm>
#include <chrono>
#include <deque>
#include <optional>

#include "StormPeer.h"
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
    Words command{"--channel", "watcher", "watch", "language", "audio-volumes"};
    std::optional<ChildProcess> watch;
    std::string line;
    const auto start = [&] {
        watch.emplace(phone.ctlCommand(command));
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

using std::chrono::steady_clock;

// Long enough that all changes are far more than an observer may leave unread.
const std::string kPadding(600, '.');
constexpr std::chrono::seconds kSoon{2};
constexpr long kMostPeakKilobytes = 64L << 10U;
constexpr const char* kQueuedBytes = "5242880";
constexpr int kChanges = kIsSanitized ? 20000 : 100000;
constexpr int kChangesAtOnce = 100;

std::string numbered(int number) {
    return "ringer-melody=" + std::to_string(number) + kPadding;
}

TEST(SlowObserver, OneThatStopsReadingIsDisconnectedAndDisturbsNobody) {
    RunningPhone phone{RunningPhone::Prepared{}};
    phone.start({"--log-flush-seconds", "1", "--max-queued-bytes", kQueuedBytes});
    StormPeer slow(phone);
    Method reply;
    ASSERT_TRUE(RpcAdapter::decodeText(
        slow.send(rpcText(methodWith("observeData", "nodeId", Parameter::eIn, "ringer-melody"))),
        reply));
    ASSERT_TRUE(reply.getBoolParameter("result", Parameter::eOut));
    std::deque<AgentPeer> others;
    for (const char* name : {"other-1", "other-2"}) {
        AgentPeer& other = others.emplace_back(phone, name);
        EXPECT_TRUE(other.observe("ringer-melody", true));
        EXPECT_TRUE(other.client().startServing());
    }

    const auto announcer = phone.connect();
    const auto reader = phone.connect();
    steady_clock::duration longest{};
    for (int number = 0; number < kChanges;) {
        Words told;
        for (int i = 0; i < kChangesAtOnce; ++i, ++number) {
            ASSERT_EQ(announceItems(*announcer, {numbered(number)}), 3);
            told.push_back("told " + numbered(number));
        }
        const auto start = steady_clock::now();
        EXPECT_TRUE(readItems(*reader, {"language"}).result);
        longest = std::max(longest, steady_clock::now() - start);
        for (AgentPeer& other : others) {
            ASSERT_TRUE(other.waitForTranscript(told.size()) == told) << number;
        }
    }
    EXPECT_LT(longest, kSoon);
    if (!kIsSanitized) {
        EXPECT_LT(peakMemory(phone.process->pid()), kMostPeakKilobytes);
    }

    int received = 0;
    while (slow.read()) {
        ++received;
    }
    EXPECT_LT(received, kChanges) << "it was disconnected before it had all";
    const std::string line =
        "peer \"storm-1\" does not take what it is sent: too much waits for it";
    EXPECT_TRUE(eventually([&] { return phone.log().find(line) != std::string::npos; }));
    const std::string log = phone.log();
    EXPECT_EQ(log.find(line), log.rfind(line)) << "it is said once";
}

}  // namespace
}  // namespace vireo::test
