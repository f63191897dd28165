#include <atomic>
#include <chrono>
#include <map>
#include <mutex>

#include "support/AddedOwner.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kVolume = "handset-volume";
constexpr const char* kNeverCached = "time";

/// Owns the items of the media service and of the time service in this process, and counts how
/// often they are read.
class CountingOwner : public MgmtAgentIfc {
public:
    bool getData(ManageableData& record) override {
        const std::lock_guard lock(m_mutex);
        ++reads;
        bool result = true;
        for (const std::string& tag : record.rootIds()) {
            result = record.populate(tag, m_values[tag]) && result;
        }
        return result;
    }
    bool setData(ManageableData& record) override {
        const std::lock_guard lock(m_mutex);
        for (const std::string& tag : record.rootIds()) {
            record.interogate(tag, tag, m_values[tag]);
        }
        return true;
    }
    bool manageableDataChanged(ManageableData& /*record*/) override { return true; }
    bool resetUserData() override { return true; }

    /// Changes a value without a word.
    void keep(const std::string& tag, const std::string& value) {
        const std::lock_guard lock(m_mutex);
        m_values[tag] = value;
    }

    std::atomic<int> reads{0};

private:
    std::mutex m_mutex;
    std::map<std::string, std::string> m_values;
};

/// A phone whose vireod has the probe service in its process.
class InProcessServiceTest : public ::testing::Test {
protected:
    InProcessServiceTest() {
        addOwner(m_phone, "ProbeMgmtId",
                 {"probe-read", "probe-call-back", "probe-log", "probe-announced"});
        addOwner(m_phone, "ProbeBulkMgmtId", {"probe-bulk-1", "probe-bulk-2"});
        m_phone.start({"--service", "lost=" + m_phone.file("none.so"), "--service",
                       std::string("probe=") + VIREO_PROBE});
        m_client = m_phone.connect();
        m_ownersClient = connectAs("media", &m_owner);
        bool registered = false;
        for (const char* managementId : {"MediaMgmtId", "TimeMgmtId"}) {
            EXPECT_EQ(m_ownersClient->registerManagementIdentity(managementId, false, registered),
                      CallStatus::eDone);
            EXPECT_TRUE(registered) << managementId;
        }
        EXPECT_TRUE(m_ownersClient->startServing());
    }

    std::unique_ptr<LocalMgmtClient> connectAs(const std::string& channel, MgmtAgentIfc* agent) {
        LocalMgmtClient::Options options;
        options.socketPath = m_phone.socket();
        options.channelName = channel;
        options.agent = agent;
        return LocalMgmtClient::connect(options, m_error);
    }

    void write(const std::vector<std::pair<std::string, std::string>>& items) {
        ManageableData record;
        for (const auto& [tag, value] : items) {
            record.populate(tag, value);
        }
        bool result = false;
        EXPECT_EQ(m_client->setData(record, result), CallStatus::eDone);
        EXPECT_TRUE(result) << record.serialize();
    }
    std::string read(const std::string& tag) {
        ManageableData record;
        record.setRootId(tag, nullptr);
        bool result = false;
        std::string value;
        EXPECT_EQ(m_client->getData(record, result), CallStatus::eDone);
        EXPECT_TRUE(result && record.interogate(tag, tag, value)) << tag;
        return value;
    }
    /// What the service in the process reads.
    std::string readSimply(const std::string& tag) {
        write({{"probe-read", tag}});
        return read("probe-read");
    }
    /// How often the owner is read while `act` runs.
    template <class Act>
    int readsDuring(Act&& act) {
        const int before = m_owner.reads;
        act();
        return m_owner.reads - before;
    }

    RunningPhone m_phone{RunningPhone::Prepared{}};
    std::string m_error;
    CountingOwner m_owner;
    std::unique_ptr<LocalMgmtClient> m_client;
    std::unique_ptr<LocalMgmtClient> m_ownersClient;
};

TEST_F(InProcessServiceTest, ASimpleReadReachesTheOwnerOnceAndIsRightAfterEveryChange) {
    m_owner.keep(kVolume, "3");
    EXPECT_EQ(readsDuring([&] { EXPECT_EQ(readSimply(kVolume), "3"); }), 1);
    EXPECT_EQ(readsDuring([&] { EXPECT_EQ(readSimply(kVolume), "3"); }), 0);

    m_owner.keep(kVolume, "4");
    ManageableData change;
    change.populate(kVolume, "4");
    int observers = -1;
    EXPECT_EQ(m_ownersClient->manageableDataChanged(change, observers), CallStatus::eDone);
    EXPECT_EQ(readSimply(kVolume), "4");

    write({{kVolume, "5"}});
    EXPECT_EQ(readSimply(kVolume), "5");

    m_owner.keep(kVolume, "6");
    EXPECT_EQ(readSimply(kVolume), "5") << "nobody can know";
    EXPECT_EQ(m_client->invalidateVCMSCache(), CallStatus::eDone);
    EXPECT_EQ(readSimply(kVolume), "6");
}

TEST_F(InProcessServiceTest, WhatIsNeverCachedAndWhatIsReadByMessageAlwaysReachesTheOwner) {
    for (const char* now : {"10:00", "10:01"}) {
        m_owner.keep(kNeverCached, now);
        EXPECT_EQ(readsDuring([&] { EXPECT_EQ(readSimply(kNeverCached), now); }), 1);
    }
    EXPECT_EQ(readSimply(kVolume), "");
    for (const char* volume : {"1", "2"}) {
        m_owner.keep(kVolume, volume);
        EXPECT_EQ(readsDuring([&] { EXPECT_EQ(read(kVolume), volume); }), 1);
    }
}

TEST_F(InProcessServiceTest, AnAgentMayCallBackInEveryWayBeforeItAnswersAWrite) {
    m_owner.keep(kVolume, "9");
    const struct {
        std::vector<std::pair<std::string, std::string>> items;
        std::string log;
    } cases[] = {
        {{{"probe-call-back", "a"}},
         "set:probe-call-back told:probe-announced=a announced:1 read:1:9 observed:1 "
         "told:phone-name=a wrote:1"},
        // Observers hear when the batches are through.
        {{{"probe-bulk-1", "x"}, {"probe-call-back", "b"}, {"probe-bulk-2", "y"}},
         "set:probe-call-back announced:1 read:1:9 observed:1 wrote:1 "
         "set:probe-bulk-1 set:probe-bulk-2 told:probe-announced=b told:phone-name=b"},
    };
    for (const auto& test : cases) {
        write({{"probe-log", ""}});
        const Clock::time_point start = Clock::now();
        write(test.items);
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(1));
        EXPECT_EQ(read("probe-log"), test.log);
    }
    EXPECT_EQ(read("phone-name"), "b");
}

TEST_F(InProcessServiceTest, ItsChannelNameIsClosedToPeersAndOneThatIsMissingStopsNothing) {
    EXPECT_EQ(connectAs("probe", nullptr), nullptr);
    EXPECT_NE(m_error.find("channel name \"probe\" is in use"), std::string::npos) << m_error;
    EXPECT_NE(connectAs("lost", nullptr), nullptr) << m_error;
    m_phone.process->kill(SIGTERM);
    EXPECT_EQ(m_phone.process->finish().exitCode, 0);
    std::ifstream log(m_phone.logFile());
    const std::string lines{std::istreambuf_iterator<char>(log), {}};
    EXPECT_NE(lines.find("the service \"lost\" is left out: cannot load the plug-in \"" +
                         m_phone.file("none.so") + "\": there is no such file"),
              std::string::npos)
        << lines;
}

}  // namespace
}  // namespace vireo::test
