#include <algorithm>
#include <chrono>
#include <deque>
#include <map>
#include <mutex>
#include <thread>

#include "support/Effort.h"
#include "unit/items/ItemHouse.h"
#include "unit/service/ServiceHouse.h"

namespace vireo::test {
namespace {

using Values = Words;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kObservers = 100;

std::string valueOf(const ManageableData& record, const std::string& tag) {
    std::string value;
    record.interogate(tag, tag, value);
    return value;
}

/// Takes all but values that end in 7.
bool takeMost(ManageableData& record) {
    bool result = true;
    for (const std::string& tag : record.rootIds()) {
        if (valueOf(record, tag).back() == '7') {
            record.addRejectReason(tag, "//*", "not this one");
            result = false;
        }
    }
    return result;
}

/// Puts down what it is told of each item, from whatever thread.
struct Watcher : TestAgent {
    bool manageableDataChanged(ManageableData& record) override {
        const std::lock_guard lock(mutex);
        for (const std::string& tag : record.rootIds()) {
            byItem[tag].push_back(valueOf(record, tag));
        }
        return true;
    }

    std::mutex mutex;
    std::map<std::string, Values> byItem;
};

/// The real store, with the values that one column took, in the order in which it took them.
struct RecordingStore : Executable, WatchedStore {
    RecordingStore(DataAccessServiceIfc& store, const std::string& column)
        : WatchedStore(store), opening("<" + column + ">"), closing("</" + column + ">") {}

    std::string request(const std::string& text) override {
        const std::lock_guard lock(mutex);
        const std::size_t begin = text.find(opening);
        if (begin != std::string::npos && text.find("update_request") != std::string::npos) {
            const std::size_t from = begin + opening.size();
            taken.push_back(text.substr(from, text.find(closing, from) - from));
        }
        return real.request(text);
    }

    const std::string opening;
    const std::string closing;
    std::mutex mutex;
    Values taken;
};

/// Writes an item of its own and one that others may write, one at a time and both at once.
class Writer {
public:
    Writer(VireoClientMgmt& service, std::string name, std::string one, std::string other)
        : m_service(service),
          m_name(std::move(name)),
          m_one(std::move(one)),
          m_other(std::move(other)) {}

    void run(Clock::time_point end) {
        const Values rounds[] = {{m_one}, {m_one, m_other}, {m_other}};
        for (int number = 0; Clock::now() < end; ++number) {
            write(rounds[number % 3], m_name + std::to_string(number));
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
    const std::string m_name;
    const std::string m_one;
    const std::string m_other;
};

using ServiceTranscript = ServiceHouse;

TEST_F(ServiceTranscript, ObserversHearEveryAcceptedWriteInOrder) {
    setLogLevel(0);
    RecordingStore recorder(*store, "Melody");
    context.store = &recorder;
    start();
    TestAgent single;
    TestAgent bulk;
    single.onSet = takeMost;
    bulk.onSet = takeMost;
    EXPECT_TRUE(service.registerManagementIdentity("EagerMgmtId", &single, false));
    EXPECT_TRUE(service.registerManagementIdentity("LazyMgmtId", &bulk, true));
    std::deque<Writer> writers;
    writers.emplace_back(service, "a", "lazy", "melody");
    writers.emplace_back(service, "b", "lazy-2", "melody");
    writers.emplace_back(service, "c", "key-1", "melody");
    writers.emplace_back(service, "d", "eager", "volume");
    const Values tags{"lazy", "lazy-2", "key-1", "eager", "melody", "volume"};
    std::deque<Watcher> watchers(kObservers);
    for (std::size_t i = 0; i < kObservers; ++i) {
        const std::string tag = i % 10 == 0 ? "all-data" : tags[i % tags.size()];
        EXPECT_EQ(service.observeManageableData(tag, &watchers[i], i % 3 == 0), 1) << tag;
    }
    const Clock::time_point end =
        Clock::now() + std::chrono::seconds(effort("VIREO_STRESS_SECONDS", 2));
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
    accepted["melody"] = recorder.taken;
    EXPECT_EQ(accepted.size(), tags.size());
    for (std::size_t i = 0; i < kObservers; ++i) {
        EXPECT_EQ(watchers[i].byItem.size(), i % 10 == 0 ? tags.size() : 1);
        for (const auto& [tag, values] : watchers[i].byItem) {
            EXPECT_TRUE(values == accepted[tag])
                << tag << ": " << values.size() << " of " << accepted[tag].size();
        }
    }
    ManageableData last = requestFor({"melody"});
    ASSERT_TRUE(service.getData(last));
    EXPECT_EQ(valueOf(last, "melody"), accepted["melody"].back());
}

}  // namespace
}  // namespace vireo::test
