#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <sstream>

#include "StormPeer.h"
#include "support/AgentPeer.h"

namespace vireo::test {
namespace {

using std::chrono::steady_clock;

// Long enough that all changes are far more than an observer may leave unread.
const std::string kPadding(600, '.');
constexpr std::chrono::seconds kSoon{2};
constexpr long kMostPeakKilobytes = 64L << 10U;
constexpr const char* kQueuedBytes = "5242880";
constexpr int kChanges = kIsSanitized ? 20000 : 100000;

Words numbered(int number) {
    return {"ringer-melody=" + std::to_string(number) + kPadding};
}

/// Counts changes that are numbered from 0, until one is missing.
class Counter : private MgmtAgentIfc {
public:
    explicit Counter(const RunningPhone& phone) {
        std::string error;
        LocalMgmtClient::Options options;
        options.socketPath = phone.socket();
        options.channelName = "counter-*";
        options.agent = this;
        m_client = LocalMgmtClient::connect(options, error);
        bool observed = false;
        EXPECT_TRUE(m_client) << error;
        EXPECT_EQ(m_client->observeData("ringer-melody", true, observed), CallStatus::eDone);
        EXPECT_TRUE(observed);
        EXPECT_TRUE(m_client->startServing());
    }

    int count() const { return m_count; }

private:
    bool manageableDataChanged(ManageableData& record) override {
        m_count += itemsOf(record) == numbered(m_count) ? 1 : 0;
        return true;
    }
    bool getData(ManageableData& /*record*/) override { return false; }
    bool setData(ManageableData& /*record*/) override { return false; }
    bool resetUserData() override { return true; }

    std::atomic<int> m_count{0};
    std::unique_ptr<LocalMgmtClient> m_client;  // last: it calls this object
};

std::string readLog(const RunningPhone& phone) {
    std::ostringstream text;
    text << std::ifstream(phone.logFile()).rdbuf();
    return text.str();
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
    const Counter counters[] = {Counter(phone), Counter(phone)};

    const auto announcer = phone.connect();
    const auto reader = phone.connect();
    steady_clock::duration longest{};
    for (int number = 0; number < kChanges; ++number) {
        ASSERT_EQ(announceItems(*announcer, numbered(number)), 3);
        if (number % 100 == 0) {
            const auto start = steady_clock::now();
            EXPECT_TRUE(readItems(*reader, {"language"}).result);
            longest = std::max(longest, steady_clock::now() - start);
        }
    }
    EXPECT_LT(longest, kSoon);
    for (const Counter& counter : counters) {
        EXPECT_TRUE(eventually([&] { return counter.count() == kChanges; })) << counter.count();
    }
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
    EXPECT_TRUE(eventually([&] { return readLog(phone).find(line) != std::string::npos; }));
    const std::string log = readLog(phone);
    EXPECT_EQ(log.find(line), log.rfind(line)) << "it is said once";
}

}  // namespace
}  // namespace vireo::test
