#include <chrono>
#include <mutex>
#include <optional>

#include "support/AddedOwner.h"
#include "support/AgentPeer.h"

namespace vireo::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kVolume = "handset-volume";

/// A phone whose vireod has the probe service in its process, and the owner of the media service's
/// items in this one.
class InProcessServiceTest : public ::testing::Test {
protected:
    InProcessServiceTest() {
        addOwner(m_phone, "ProbeMgmtId",
                 {"probe-read", "probe-call-back", "probe-log", "probe-announced"});
        addOwner(m_phone, "ProbeBulkMgmtId", {"probe-bulk-1", "probe-bulk-2"});
        m_phone.start({"--service", "lost=" + m_phone.file("none.so"), "--service",
                       std::string("probe=") + VIREO_PROBE});
        m_client = m_phone.connect();
        m_owner.emplace(m_phone, "media");
        m_owner->whenRead = [this](ManageableData& record) {
            const std::lock_guard lock(m_mutex);
            return record.populate(record.getRootId(), m_kept);
        };
        EXPECT_TRUE(m_owner->own("MediaMgmtId", false));
    }

    /// Changes what the owner has without a word.
    void keep(const std::string& value) {
        const std::lock_guard lock(m_mutex);
        m_kept = value;
    }
    void write(const Words& assignments) { EXPECT_TRUE(writeItems(*m_client, assignments).result); }
    std::string read(const std::string& tag) { return readItems(*m_client, {tag}).value(tag); }
    /// What the service in the process reads.
    std::string readSimply(const std::string& tag) {
        write({"probe-read=" + tag});
        return read("probe-read");
    }

    RunningPhone m_phone{RunningPhone::Prepared{}};
    std::unique_ptr<LocalMgmtClient> m_client;
    std::mutex m_mutex;
    std::string m_kept;
    std::optional<AgentPeer> m_owner;
};

TEST_F(InProcessServiceTest, ASimpleReadReachesTheOwnerOnceAndIsRightAfterEveryChange) {
    keep("3");
    EXPECT_EQ(readSimply(kVolume), "3");
    EXPECT_EQ(m_owner->takeTranscript(), Words{"get handset-volume"});
    EXPECT_EQ(readSimply(kVolume), "3");
    EXPECT_EQ(m_owner->takeTranscript(), Words{});

    keep("4");
    announceItems(m_owner->client(), {"handset-volume=4"});
    EXPECT_EQ(readSimply(kVolume), "4");

    write({"handset-volume=5"});
    EXPECT_EQ(readSimply(kVolume), "5");

    keep("6");
    EXPECT_EQ(readSimply(kVolume), "5") << "nobody can know";
    EXPECT_EQ(m_client->invalidateVCMSCache(), CallStatus::eDone);
    EXPECT_EQ(readSimply(kVolume), "6");

    keep("7");
    EXPECT_EQ(read(kVolume), "7") << "a read by message always reaches the owner";
}

TEST_F(InProcessServiceTest, AnAgentMayCallBackInEveryWayBeforeItAnswersAWrite) {
    keep("9");
    const struct {
        Words items;
        std::string log;
    } cases[] = {
        {{"probe-call-back=a"},
         "set:probe-call-back told:probe-announced=a announced:1 read:1:9 observed:1 "
         "told:phone-name=a wrote:1"},
        // Observers hear when the batches are through.
        {{"probe-bulk-1=x", "probe-call-back=b", "probe-bulk-2=y"},
         "set:probe-call-back announced:1 read:1:9 observed:1 wrote:1 "
         "set:probe-bulk-1 set:probe-bulk-2 told:probe-announced=b told:phone-name=b"},
    };
    for (const auto& test : cases) {
        write({"probe-log="});
        const Clock::time_point start = Clock::now();
        write(test.items);
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(1));
        EXPECT_EQ(read("probe-log"), test.log);
    }
    EXPECT_EQ(read("phone-name"), "b");
}

TEST_F(InProcessServiceTest, ItsChannelNameIsClosedToPeersAndOneThatIsMissingStopsNothing) {
    LocalMgmtClient::Options options;
    options.socketPath = m_phone.socket();
    options.channelName = "probe";
    std::string error;
    EXPECT_EQ(LocalMgmtClient::connect(options, error), nullptr);
    EXPECT_NE(error.find("channel name \"probe\" is in use"), std::string::npos) << error;
    options.channelName = "lost";
    EXPECT_NE(LocalMgmtClient::connect(options, error), nullptr) << error;
    m_phone.stop();
    EXPECT_NE(m_phone.log().find("the service \"lost\" is left out: cannot load the plug-in \"" +
                                 m_phone.file("none.so") + "\": there is no such file"),
              std::string::npos)
        << m_phone.log();
}

}  // namespace
}  // namespace vireo::test
