#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "data/ManageableData.h"

namespace vireo::test {

/// One thread's way to the service. A call that is not answered fails the test by itself.
class StressCaller {
public:
    virtual ~StressCaller() = default;
    virtual bool setData(ManageableData& record) = 0;
    virtual bool getData(ManageableData& record) = 0;
    /// The value of one item, where there is a way of its own to it.
    virtual bool getValue(const std::string& tag, std::string& value) = 0;
    /// Calls something else; `choice` is any number.
    virtual void callOther(unsigned choice, const std::string& tag) = 0;
};

/// Twenty threads that read and write items for a while. Each item has one writer, which writes
/// ever higher numbers. So whatever is read must be a whole value, no older than the last one that
/// was acknowledged before the read began, and no newer than the last one that was sent before it
/// ended.
class StressRun {
public:
    /// Makes the way to the service of one thread; called by that thread with its number, from 0.
    using NewCaller = std::function<std::unique_ptr<StressCaller>(unsigned thread)>;

    /// `tags`: items of one text each, an even number of them; every two have one writer.
    StressRun(const std::vector<std::string>& tags, NewCaller newCaller);

    /// Runs for VIREO_STRESS_SECONDS (default 2) and looks at every item once more at the end.
    /// What does not hold fails the current test.
    void run();

private:
    struct Item {
        explicit Item(std::string name) : tag(std::move(name)) {}
        std::string tag;
        std::atomic<long> sent{0};
        std::atomic<long> acknowledged{0};
    };

    bool goesOn() const;
    void write(StressCaller& caller, std::size_t first);
    void writeItems(StressCaller& caller, const std::vector<Item*>& items);
    void read(StressCaller& caller, unsigned seed);
    void readRecord(StressCaller& caller, const std::vector<Item*>& items);
    void readValue(StressCaller& caller, Item& item);
    void readSome(StressCaller& caller, std::mt19937& random);
    static void check(const Item& item, const std::string& value, long oldest);

    std::deque<Item> m_items;
    NewCaller m_newCaller;
    std::chrono::steady_clock::time_point m_end;
    std::atomic<long> m_writes{0};
    std::atomic<long> m_reads{0};
};

}  // namespace vireo::test
