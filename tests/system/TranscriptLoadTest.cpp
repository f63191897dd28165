#include <algorithm>
#include <chrono>
#include <deque>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "support/AddedOwner.h"
#include "support/AgentPeer.h"
#include "support/Effort.h"
#include "support/ProcessState.h"
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

using Transcript = Words;  // "tag=value"
using Clock = std::chrono::steady_clock;

std::string tagOf(std::size_t owner, std::size_t item) {
    return "load-" + std::to_string(owner) + '-' + std::to_string(item);
}

std::string tagOf(const std::string& line) {
    return line.substr(0, line.find('='));
}

/// Takes all but values that end in 7.
bool takeMost(ManageableData& record) {
    bool result = true;
    for (const std::string& line : itemsOf(record)) {
        if (line.back() == '7') {
            record.addRejectReason(tagOf(line), "//*", "not this one");
            result = false;
        }
    }
    return result;
}

/// Puts down what it is told, item by item.
class Watcher {
public:
    Watcher(const RunningPhone& phone, const std::set<std::string>& tags, bool bulk)
        : m_tags(tags), m_peer(phone, "load-*") {
        for (const std::string& tag : tags) {
            EXPECT_TRUE(m_peer.observe(tag, bulk)) << tag;
        }
        EXPECT_TRUE(m_peer.client().startServing());
    }

    /// What it was told up to the last write of all.
    const Transcript& transcript() {
        const auto takeMore = [this] {
            for (const std::string& line : m_peer.takeTranscript()) {
                take(line);
            }
            return !m_transcript.empty() && tagOf(m_transcript.back()) == kEnd;
        };
        EXPECT_TRUE(eventually(takeMore));
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
    /// "told a=1 b=2".
    void take(const std::string& line) {
        std::istringstream words(line);
        std::string word;
        words >> word;
        while (words >> word) {
            if (word.starts_with("load-")) {
                m_transcript.push_back(word);
            }
        }
    }

    const std::set<std::string> m_tags;
    AgentPeer m_peer;
    Transcript m_transcript;
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
            Words assignments;
            for (std::size_t count = 1 + m_random() % 4; count > 0; --count) {
                assignments.push_back(tagOf(m_random() % kOwners, m_random() % kTagsOfOwner) + '=' +
                                      std::to_string(m_number) + '#' + std::to_string(++m_written));
            }
            write(assignments);
        }
    }
    void write(const Words& assignments) {
        const ItemAnswer answer = writeItems(*m_client, assignments);
        EXPECT_EQ(answer.result, answer.refusals.empty());
        std::set<std::string> refused;
        for (const std::string& refusal : answer.refusals) {
            EXPECT_TRUE(refusal.ends_with(": not this one")) << refusal;
            refused.insert(refusal.substr(0, refusal.find(':')));
        }
        // Of several values for one item the last one is sent.
        const Transcript sent = itemsOf(recordOf(assignments));
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
            AgentPeer& owner = m_owners.emplace_back(m_phone, "load-*");
            owner.whenWritten = takeMost;
            EXPECT_TRUE(owner.own(managementIdOf(i), i % 2 == 0));
        }
        std::minstd_rand random(1);
        for (std::size_t i = 0; i < kObservers; ++i) {
            std::set<std::string> tags{kEnd};
            while (tags.size() < kTagsWatched) {
                tags.insert(tagOf(random() % kOwners, random() % kTagsOfOwner));
            }
            m_watchers.emplace_back(m_phone, tags, i % 2 == 0);
        }
        m_all.emplace(m_phone, std::set<std::string>{"all-data"}, false);
    }

    void write() {
        for (std::size_t i = 0; i < kWriters; ++i) {
            m_writers.emplace_back(m_phone, i);
        }
        const Clock::time_point end =
            Clock::now() + std::chrono::seconds(effort("VIREO_STRESS_SECONDS", 2));
        std::vector<std::thread> threads;
        for (Writer& writer : m_writers) {
            threads.emplace_back([&writer, end] { writer.run(end); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        m_writers.front().write({std::string(kEnd) + "=0#end"});
    }

    RunningPhone m_phone{RunningPhone::Prepared{}};
    std::deque<AgentPeer> m_owners;
    std::deque<Watcher> m_watchers;
    std::optional<Watcher> m_all;  // says what came when
    std::deque<Writer> m_writers;
};

TEST_F(TranscriptLoad, EveryWatcherHearsTheAcceptedWritesOfItsItemsInTheOneOrder) {
    configure();
    connectParts();
    write();
    const Transcript& all = m_all->transcript();
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
