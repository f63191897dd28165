#include <thread>

#include "items/ChangeNotifier.h"
#include "unit/items/ItemHouse.h"

namespace vireo::test {
namespace {

class ChangeNotifierTest : public ItemHouse {
protected:
    ChangeNotifierTest() { load(); }

    TestAgent a;
    TestAgent b;
};

TEST_F(ChangeNotifierTest, FlagsDecideBetweenCombinedAndSingleRecords) {
    for (const char* tag : {"x", "y", "z"}) {
        registry.addObserver(tag, {&a, true});
        registry.addObserver(tag, {&b, false});
    }
    registry.addObserver(kAllData, {&b, false});
    registry.addObserver("z", {&b, false});
    ManageableData record = recordOf({"x=1", "y=2", "z=3"});
    record.addRootId("w", nullptr);  // without a document nobody is told of it
    EXPECT_EQ(notifier.announce(record, notifier.begin()), 8U);
    EXPECT_EQ(a.told, Texts{"x=1 y=2 z=3"});
    EXPECT_EQ(b.told, (Texts{"x=1", "x=1", "y=2", "y=2", "z=3", "z=3", "z=3"}));
}

TEST_F(ChangeNotifierTest, WhatOneDoesToItsRecordNoOtherSees) {
    for (TestAgent* observer : {&a, &b, &a, &b}) {
        registry.addObserver("x", {observer, false});
    }
    b.onChange = [](ManageableData& record) { return record.populate("x", "9"); };
    EXPECT_EQ(notifier.announce(recordOf({"x=1"}), notifier.begin()), 4U);
    EXPECT_EQ(a.told, (Texts{"x=1", "x=1"}));
    EXPECT_EQ(b.told, (Texts{"x=1", "x=1"}));
}

TEST_F(ChangeNotifierTest, OneThatThrowsLeavesNobodyUntold) {
    a.onChange = [](ManageableData&) -> bool { throw std::runtime_error("no"); };
    registry.addObserver("x", {&a, false});
    registry.addObserver("x", {&b, false});
    EXPECT_EQ(notifier.announce(recordOf({"x=1"}), notifier.begin()), 2U);
    EXPECT_EQ(b.told, Texts{"x=1"});
    EXPECT_EQ(ports.count(kLogError, "manageableDataChanged: no"), 1);
}

TEST_F(ChangeNotifierTest, TheCacheIsRightBeforeTheFirstObserverIsTold) {
    cache.update("lazy", "old");
    a.onChange = [this](ManageableData& record) {
        EXPECT_TRUE(record.getSchema("preset"))
            << "the master collection's, as the record had none";
        std::string value;
        return reader.getData("lazy", value) && value == "new";
    };
    registry.addObserver("lazy", {&a, false});
    ManageableData record;
    record.copySchema("preset", catalogue.master());
    record.makeDocument("preset", "lazy");
    record.populate("lazy", "new");
    ManageableData withoutSchema;
    withoutSchema.copyDocument("lazy", record);
    withoutSchema.addRootId("lazy", nullptr);
    EXPECT_EQ(notifier.announce(withoutSchema, notifier.begin()), 1U);
    // Of several items all are right before the first one is told.
    cache.update("lazy-2", "old");
    a.onChange = [this](ManageableData&) {
        std::string value;
        EXPECT_TRUE(cache.fetch("lazy-2", value));
        EXPECT_EQ(value, "new");
        return true;
    };
    notifier.announce(recordOf({"lazy=new", "lazy-2=new"}), notifier.begin());
    notifier.announce(requestFor({"lazy"}), notifier.begin());
    std::string value;
    EXPECT_FALSE(cache.fetch("lazy", value)) << "a change without a value makes it forget";
}

TEST_F(ChangeNotifierTest, AnObserverMayEmptyTheRecordOfTheWriter) {
    ManageableData record = recordOf({"x=1", "y=2"});
    a.onChange = [&record](ManageableData&) {
        record.clearAll();
        return true;
    };
    registry.addObserver("x", {&a, false});
    registry.addObserver("x", {&b, false});
    registry.addObserver("y", {&b, false});
    EXPECT_EQ(notifier.announce(record, notifier.begin()), 2U);
    EXPECT_EQ(b.told, Texts{"x=1"});
}

TEST_F(ChangeNotifierTest, AnotherThreadWaitsForTheRegistryAndTheHoldSurvivesExceptions) {
    try {
        const RegistryHold outer(registry.semaphore());
        const RegistryHold inner(registry.semaphore());
        registry.addObserver("x", {&a, false});
        EXPECT_EQ(notifier.announce(recordOf({"x=1"}), notifier.begin()), 1U);
        EXPECT_TRUE(a.told.empty());
        throw std::runtime_error("in between");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(a.told, Texts{"x=1"});
    bool entered = false;
    std::thread other([&] {
        const RegistryHold hold(registry.semaphore());
        entered = true;
    });
    other.join();
    EXPECT_TRUE(entered);
}

}  // namespace
}  // namespace vireo::test
