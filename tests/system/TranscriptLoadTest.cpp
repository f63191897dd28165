#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <random>
#include <set>
#include <thread>

#include "support/AddedOwner.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

constexpr std::size_t kObservers = 100;
constexpr std::size_t kOwners = 50;
constexpr std::size_t kWriters = 10;
constexpr std::size_t kTagsOfOwner = 2;
constexpr std::size_t kTagsWatched = 6;
constexpr std::chrono::seconds kPatience{120};
constexpr const char* kEnd = "load-end";  // the last write of all

using Transcript = std::vector<std::string>;  // "tag=value"
using Clock = std::chrono::steady_clock;

long seconds() {
    const char* wanted = std::getenv("VIREO_STRESS_SECONDS");
    return wanted != nullptr ? std::atol(wanted) : 2;
}

std::string tagOf(std::size_t owner, std::size_t item) {
    return "load-" + std::to_string(owner) + '-' + std::to_string(item);
}

std::string tagOf(const std::string& line) {
    return line.substr(0, line.find('='));
}

std::string lineOf(const ManageableData& record, const std::string& tag) {
    std::string value;
    record.interogate(tag, tag, value);
    return tag + '=' + value;
}

/// Owners do not take every value.
bool isRefused(const std::string& line) {
    return line.back() == '7';
}

/// A process's part in the load: a connection that is served by a thread of its own.
class Part : public MgmtAgentIfc {
public:
    bool getData(ManageableData& /*record*/) override { return false; }
    bool setData(ManageableData& /*record*/) override { return false; }
    bool manageableDataChanged(ManageableData& /*record*/) override { return true; }
    bool resetUserData() override { return true; }

    void connect(const RunningPhone& phone) {
        LocalMgmtClient::Options options;
        options.socketPath = phone.socket();
        options.channelName = "load-*";
        options.timeout = kPatience;
        options.agent = this;
        std::string error;
        client = LocalMgmtClient::connect(options, error);
        ASSERT_TRUE(client) << error;
        ASSERT_TRUE(client->startServing());
    }

    std::unique_ptr<LocalMgmtClient> client;
};

class Owner : public Part {
public:
    void own(const std::string& managementId, bool bulk) {
        bool registered = false;
        EXPECT_EQ(client->registerManagementIdentity(managementId, bulk, registered),
                  CallStatus::eDone);
        EXPECT_TRUE(registered);
    }
    bool setData(ManageableData& record) override {
        bool result = true;
        for (const std::string& tag : record.rootIds()) {
            if (isRefused(lineOf(record, tag))) {
                record.addRejectReason(tag, "//*", "not this one");
                result = false;
            }
        }
        return result;
    }
};

/// Puts down what it is told, item by item.
class Watcher : public Part {
public:
    void watch(const std::set<std::string>& tags, bool bulk) {
        for (const std::string& tag : tags) {
            bool observed = false;
            EXPECT_EQ(client->observeData(tag, bulk, observed), CallStatus::eDone);
            EXPECT_TRUE(observed) << tag;
        }
        m_tags = tags;
    }
    bool manageableDataChanged(ManageableData& record) override {
        const std::lock_guard lock(m_mutex);
        for (const std::string& tag : record.rootIds()) {
            if (tag.starts_with("load-")) {
                m_transcript.push_back(lineOf(record, tag));
                m_isComplete = m_isComplete || tag == kEnd;
            }
        }
        m_changed.notify_one();
        return true;
    }

    /// What it was told up to the last write of all.
    const Transcript& transcript() {
        std::unique_lock lock(m_mutex);
        EXPECT_TRUE(m_changed.wait_for(lock, kPatience, [this] { return m_isComplete; }));
        return m_transcript;
    }
    /// What of `all` it is to be told.
    Transcript share(const Transcript& all) const {
        Transcript result;
        std::copy_if(all.begin(), all.end(), std::back_inserter(result),
                     [this](const std::string& line) { return m_tags.contains(tagOf(line)); });
        return result;
    }

private:
    std::set<std::string> m_tags;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Transcript m_transcript;
    bool m_isComplete = false;
};

/// Writes one to four items at a time and puts down what was accepted.
class Writer {
public:
    Writer(const RunningPhone& phone, std::size_t number)
        : m_client(phone.connect()), m_number(number), m_random(static_cast<unsigned>(number)) {
        m_client->setTimeout(kPatience);
    }

    void run(Clock::time_point end) {
        while (Clock::now() < end && !::testing::Test::HasFailure()) {
            ManageableData record;
            for (std::size_t count = 1 + m_random() % 4; count > 0; --count) {
                record.populate(tagOf(m_random() % kOwners, m_random() % kTagsOfOwner),
                                std::to_string(m_number) + '#' + std::to_string(++m_written));
            }
            write(record);
        }
    }
    void write(ManageableData& record) {
        Transcript sent;
        for (const std::string& tag : record.rootIds()) {
            sent.push_back(lineOf(record, tag));
        }
        bool result = false;
        EXPECT_EQ(m_client->setData(record, result), CallStatus::eDone);
        std::set<std::string> refused;
        for (const RejectionSpec& each : record.rejections()) {
            EXPECT_EQ(each.reason(), "not this one") << each.rootId();
            refused.insert(each.rootId());
        }
        EXPECT_EQ(result, refused.empty());
        std::copy_if(sent.begin(), sent.end(), std::back_inserter(accepted),
                     [&](const std::string& line) { return !refused.contains(tagOf(line)); });
    }

    Transcript accepted;

    bool isOwn(const std::string& line) const {
        return line.find('=' + std::to_string(m_number) + '#') != std::string::npos;
    }

private:
    std::unique_ptr<LocalMgmtClient> m_client;
    std::size_t m_number;
    std::minstd_rand m_random;
    long m_written = 0;
};

class TranscriptLoad : public ::testing::Test {
protected:
    void configure() {
        for (std::size_t i = 0; i < kOwners; ++i) {
            std::vector<std::string> tags;
            for (std::size_t item = 0; item < kTagsOfOwner; ++item) {
                tags.push_back(tagOf(i, item));
            }
            addOwner(m_phone, managementIdOf(i), tags);
        }
        addOwner(m_phone, "LoadEndMgmtId", {kEnd});
        m_phone.start({"--answer-timeout-ms", std::to_string(kPatience.count() * 1000)});
    }
    static std::string managementIdOf(std::size_t owner) {
        return "Load" + std::to_string(owner) + "MgmtId";
    }

    void connectParts() {
        for (std::size_t i = 0; i < kOwners; ++i) {
            ASSERT_NO_FATAL_FAILURE(m_owners.emplace_back().connect(m_phone));
            m_owners.back().own(managementIdOf(i), i % 2 == 0);
        }
        std::minstd_rand random(1);
        for (std::size_t i = 0; i < kObservers; ++i) {
            ASSERT_NO_FATAL_FAILURE(m_watchers.emplace_back().connect(m_phone));
            std::set<std::string> tags{kEnd};
            while (tags.size() < kTagsWatched) {
                tags.insert(tagOf(random() % kOwners, random() % kTagsOfOwner));
            }
            m_watchers.back().watch(tags, i % 2 == 0);
        }
        ASSERT_NO_FATAL_FAILURE(m_all.connect(m_phone));
        m_all.watch({"all-data"}, false);
    }

    void write() {
        for (std::size_t i = 0; i < kWriters; ++i) {
            m_writers.emplace_back(m_phone, i);
        }
        const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds());
        std::vector<std::thread> threads;
        for (Writer& writer : m_writers) {
            threads.emplace_back([&writer, end] { writer.run(end); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        ManageableData last;
        last.populate(kEnd, "0#end");
        m_writers.front().write(last);
    }

    RunningPhone m_phone{RunningPhone::Prepared{}};
    std::deque<Owner> m_owners;
    std::deque<Watcher> m_watchers;
    Watcher m_all;  // says what came when
    std::deque<Writer> m_writers;
};

TEST_F(TranscriptLoad, EveryWatcherHearsTheAcceptedWritesOfItsItemsInTheOneOrder) {
    configure();
    ASSERT_NO_FATAL_FAILURE(connectParts());
    write();
    const Transcript& all = m_all.transcript();
    std::size_t accepted = 0;
    for (const Writer& writer : m_writers) {
        Transcript heard;
        std::copy_if(all.begin(), all.end(), std::back_inserter(heard),
                     [&](const std::string& line) { return writer.isOwn(line); });
        EXPECT_TRUE(heard == writer.accepted)
            << heard.size() << " of " << writer.accepted.size() << " in order";
        EXPECT_GT(writer.accepted.size(), 0U);
        accepted += writer.accepted.size();
    }
    EXPECT_EQ(all.size(), accepted);
    for (Watcher& watcher : m_watchers) {
        const Transcript& heard = watcher.transcript();
        EXPECT_TRUE(heard == watcher.share(all))
            << heard.size() << " lines instead of " << watcher.share(all).size();
    }
    std::printf("%zu values accepted\n", accepted);
}

}  // namespace
}  // namespace vireo::test
