#include "support/StressRun.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <thread>

#include "support/Effort.h"

namespace vireo::test {
namespace {

constexpr unsigned kThreads = 20;

/// Values differ in length, so that parts of two would show.
std::string valueOf(const std::string& tag, long number) {
    return tag + '#' + std::to_string(number) + '#' +
           std::string(static_cast<std::size_t>(number % 300),
                       static_cast<char>('a' + number % 26));
}

}  // namespace

StressRun::StressRun(const std::vector<std::string>& tags, NewCaller newCaller)
    : m_newCaller(std::move(newCaller)) {
    for (const std::string& tag : tags) {
        m_items.emplace_back(tag);
    }
}

bool StressRun::goesOn() const {
    return std::chrono::steady_clock::now() < m_end && !::testing::Test::HasFailure();
}

void StressRun::run() {
    const auto caller = m_newCaller(kThreads);
    ASSERT_TRUE(caller);
    std::vector<Item*> all;
    for (Item& item : m_items) {
        all.push_back(&item);
    }
    writeItems(*caller, all);
    m_end =
        std::chrono::steady_clock::now() + std::chrono::seconds(effort("VIREO_STRESS_SECONDS", 2));
    const std::size_t writers = m_items.size() / 2;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i) {
        threads.emplace_back([this, i, writers] {
            const auto own = m_newCaller(i);
            if (own == nullptr) {
                return;  // the caller's maker has said why
            }
            i < writers ? write(*own, std::size_t{2} * i) : read(*own, i);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    readRecord(*caller, all);
    for (const Item& item : m_items) {
        EXPECT_EQ(item.acknowledged, item.sent) << item.tag << ": every write is answered";
    }
    std::printf("%ld writes, %ld reads\n", m_writes.load(), m_reads.load());
    EXPECT_GT(m_reads, 0);
}

void StressRun::write(StressCaller& caller, std::size_t first) {
    Item& one = m_items[first];
    Item& other = m_items[first + 1];
    const std::vector<Item*> rounds[] = {{&one}, {&one, &other}, {&other}, {&other, &one}};
    for (unsigned round = 0; goesOn(); ++round) {
        writeItems(caller, rounds[round % std::size(rounds)]);
        readValue(caller, one);
    }
}

void StressRun::writeItems(StressCaller& caller, const std::vector<Item*>& items) {
    ManageableData record;
    for (Item* item : items) {
        EXPECT_TRUE(record.populate(item->tag, valueOf(item->tag, ++item->sent)));
    }
    EXPECT_TRUE(caller.setData(record)) << record.serialize();
    for (Item* item : items) {
        item->acknowledged.store(item->sent);
    }
    ++m_writes;
}

void StressRun::read(StressCaller& caller, unsigned seed) {
    std::mt19937 random(seed);
    while (goesOn()) {
        Item& item = m_items[random() % m_items.size()];
        switch (random() % 8) {
            case 0:
                caller.callOther(static_cast<unsigned>(random()), item.tag);
                break;
            case 1:
            case 2:
                readValue(caller, item);
                break;
            default:
                readSome(caller, random);
        }
    }
}

void StressRun::readSome(StressCaller& caller, std::mt19937& random) {
    std::vector<Item*> items;
    const std::size_t first = random() % m_items.size();
    const std::size_t count = 1 + random() % 4;
    for (std::size_t i = 0; i < count; ++i) {
        items.push_back(&m_items[(first + i) % m_items.size()]);
    }
    readRecord(caller, items);
}

void StressRun::readRecord(StressCaller& caller, const std::vector<Item*>& items) {
    ManageableData record;
    std::vector<long> oldest;
    for (const Item* item : items) {
        record.addRootId(item->tag, nullptr);
        oldest.push_back(item->acknowledged);
    }
    EXPECT_TRUE(caller.getData(record));
    for (std::size_t i = 0; i < items.size(); ++i) {
        std::string value;
        EXPECT_TRUE(record.interogate(items[i]->tag, items[i]->tag, value));
        check(*items[i], value, oldest[i]);
    }
    ++m_reads;
}

void StressRun::readValue(StressCaller& caller, Item& item) {
    const long oldest = item.acknowledged;
    std::string value;
    EXPECT_TRUE(caller.getValue(item.tag, value));
    check(item, value, oldest);
    ++m_reads;
}

void StressRun::check(const Item& item, const std::string& value, long oldest) {
    const long newest = item.sent;
    const std::size_t mark = value.find('#');
    const long number = mark == std::string::npos ? -1 : std::atol(value.c_str() + mark + 1);
    EXPECT_TRUE(number >= 0 && value == valueOf(item.tag, number)) << item.tag << ": " << value;
    EXPECT_GE(number, oldest) << item.tag << ": what was acknowledged is gone";
    EXPECT_LE(number, newest) << item.tag;
}

}  // namespace vireo::test
