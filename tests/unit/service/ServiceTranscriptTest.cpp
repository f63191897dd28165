#include <algorithm>
#include <chrono>
#include <deque>
#include <map>
#include <mutex>
#include <thread>

#include "MgmtAgentIfc.h"
#include "unit/service/ServiceHouse.h"

namespace vireo::test {
namespace {

using Values = std::vector<std::string>;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kObservers = 100;

long seconds() {
    const char* wanted = std::getenv("VIREO_STRESS_SECONDS");
    return wanted != nullptr ? std::atol(wanted) : 2;
}

std::string valueOf(const ManageableData& record, const std::string& tag) {
    std::string value;
    record.interogate(tag, tag, value);
    return value;
}

/// Takes all but values that end in 7.
struct FussyOwner : MgmtAgentIfc {
    bool getData(ManageableData& /*record*/) override { return false; }
    bool setData(ManageableData& record) override {
        bool result = true;
        for (const std::string& tag : record.rootIds()) {
            if (valueOf(record, tag).back() == '7') {
                record.addRejectReason(tag, "//*", "not this one");
                result = false;
            }
        }
        return result;
    }
    bool manageableDataChanged(ManageableData& /*record*/) override { return true; }
    bool resetUserData() override { return true; }
};

/// Puts down what it is told of each item, from whatever thread.
struct Watcher : MgmtAgentIfc {
    bool getData(ManageableData& /*record*/) override { return false; }
    bool setData(ManageableData& /*record*/) override { return false; }
    bool manageableDataChanged(ManageableData& record) override {
        const std::lock_guard lock(mutex);
        for (const std::string& tag : record.rootIds()) {
            told[tag].push_back(valueOf(record, tag));
        }
        return true;
    }
    bool resetUserData() override { return true; }

    std::mutex mutex;
    std::map<std::string, Values> told;
};

/// Writes two items that nobody else writes, one at a time and both at once.
class Writer {
public:
    Writer(VireoClientMgmt& service, std::string one, std::string other)
        : m_service(service), m_one(std::move(one)), m_other(std::move(other)) {}

    void run(Clock::time_point end) {
        const Values rounds[] = {{m_one}, {m_one, m_other}, {m_other}};
        for (int number = 0; Clock::now() < end; ++number) {
            write(rounds[number % 3], std::to_string(number));
        }
    }

    std::map<std::string, Values> accepted;

private:
    void write(const Values& tags, const std::string& value) {
        ManageableData record;
        for (const std::string& tag : tags) {
            record.populate(tag, value);
        }
        m_service.setData(record);
        for (const std::string& tag : tags) {
            const auto isRefused = [&tag](const auto& each) { return each.rootId() == tag; };
            if (std::none_of(record.rejections().begin(), record.rejections().end(), isRefused)) {
                accepted[tag].push_back(value);
            }
        }
    }

    VireoClientMgmt& m_service;
    const std::string m_one;
    const std::string m_other;
};

using ServiceTranscript = ServiceHouse;

TEST_F(ServiceTranscript, ObserversHearEveryAcceptedWriteOfAnItemInTheOrderOfItsWriter) {
    setLogLevel(0);
    start();
    FussyOwner single;
    FussyOwner bulk;
    EXPECT_TRUE(service.registerManagementIdentity("EagerMgmtId", &single, false));
    EXPECT_TRUE(service.registerManagementIdentity("LazyMgmtId", &bulk, true));
    std::deque<Writer> writers;
    const char* const pairs[][2] = {
        {"melody", "lazy"}, {"volume", "lazy-2"}, {"key-1", "eager"}, {"key-2", "guarded"}};
    Values tags;
    for (const auto& [one, other] : pairs) {
        writers.emplace_back(service, one, other);
        tags.insert(tags.end(), {one, other});
    }
    std::deque<Watcher> watchers(kObservers);
    for (std::size_t i = 0; i < kObservers; ++i) {
        const std::string tag = i % 10 == 0 ? "all-data" : tags[i % tags.size()];
        EXPECT_EQ(service.observeManageableData(tag, &watchers[i], i % 3 == 0), 1) << tag;
    }
    const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds());
    std::vector<std::thread> threads;
    for (Writer& writer : writers) {
        threads.emplace_back([&writer, end] { writer.run(end); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::map<std::string, Values> accepted;
    for (const Writer& writer : writers) {
        accepted.insert(writer.accepted.begin(), writer.accepted.end());
    }
    EXPECT_EQ(accepted.size(), tags.size());
    for (std::size_t i = 0; i < kObservers; ++i) {
        EXPECT_EQ(watchers[i].told.size(), i % 10 == 0 ? tags.size() : 1);
        for (const auto& [tag, values] : watchers[i].told) {
            EXPECT_TRUE(values == accepted[tag])
                << tag << ": " << values.size() << " of " << accepted[tag].size();
        }
    }
}

}  // namespace
}  // namespace vireo::test
