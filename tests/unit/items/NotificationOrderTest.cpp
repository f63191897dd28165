#include <future>

#include "unit/items/ItemHouse.h"

namespace vireo::test {
namespace {

class NotificationOrderTest : public ItemHouse {
protected:
    NotificationOrderTest() {
        load();
        EXPECT_TRUE(registry.addAgent("LazyMgmtId", {&owner, false}));
    }

    TestAgent owner;
    TestAgent first;
    TestAgent second;
};

TEST_F(NotificationOrderTest, WhatAnOwnerWritesWithinARecordIsToldInTheOrderOfEffect) {
    struct Case {
        const char* name;
        std::vector<std::pair<std::string, std::string>> inner;
        Texts single;
        Texts bulk;
        bool takesMelody = true;
        bool isOneByOne = false;
    };
    const Case cases[] = {
        {"an item that was written before the owner was called",
         {{"melody", "inner"}},
         {"melody=outer", "lazy=outer", "volume=outer", "melody=inner"},
         {"melody=outer lazy=outer volume=outer", "melody=inner"}},
        {"an item that is written after the owner was called",
         {{"volume", "inner"}},
         {"volume=inner", "melody=outer", "lazy=outer", "volume=outer"},
         {"volume=inner", "melody=outer lazy=outer volume=outer"},
         false},
        {"one of each: neither record can come first as a whole",
         {{"volume", "inner"}, {"melody", "inner"}},
         {"melody=outer", "lazy=outer", "volume=inner", "melody=inner", "volume=outer"},
         {"melody=outer lazy=outer", "volume=inner melody=inner", "volume=outer"}},
        {"one of each, one after the other: every record can stay whole",
         {{"melody", "inner"}, {"volume", "inner"}},
         {"volume=inner", "melody=outer", "lazy=outer", "volume=outer", "melody=inner"},
         {"volume=inner", "melody=outer lazy=outer volume=outer", "melody=inner"},
         true,
         true},
    };
    registry.addObserver("all-data", {&first, false});
    registry.addObserver("all-data", {&second, true});
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        owner.onSet = [&](ManageableData& /*record*/) {
            if (!each.isOneByOne) {
                return set(each.inner, true).empty();
            }
            for (const auto& item : each.inner) {
                set({item}, true);
            }
            return true;
        };
        EXPECT_EQ(set({{"melody", "outer"}, {"lazy", "outer"}, {"volume", "outer"}}, true),
                  Texts{});
        EXPECT_EQ(std::exchange(first.told, {}), each.single);
        EXPECT_EQ(std::exchange(second.told, {}), each.bulk);
        EXPECT_EQ(get("melody"), each.takesMelody ? "inner" : "outer");
        EXPECT_EQ(get("volume"), "outer");
    }
}

TEST_F(NotificationOrderTest, WhatAnObserverWritesWhenItIsToldReachesTheOthersAfterwards) {
    registry.addObserver("melody", {&first, false});
    registry.addObserver("melody", {&second, false});
    first.onChange = [this](ManageableData& /*record*/) {
        const std::size_t next = first.told.size() + 1;
        return next > 3 || set({{"melody", std::to_string(next)}}, true).empty();
    };
    EXPECT_EQ(set({{"melody", "1"}}, true), Texts{});
    EXPECT_EQ(first.told, (Texts{"melody=1", "melody=2", "melody=3"}));
    EXPECT_EQ(second.told, first.told);
}

TEST_F(NotificationOrderTest, AWriterDoesNotWaitForAnObserverThatHangs) {
    registry.addObserver("melody", {&first, false});
    std::promise<void> reached;
    std::promise<void> released;
    first.onChange = [&](ManageableData& /*record*/) {
        if (first.told.size() == 1) {
            reached.set_value();
            released.get_future().wait();
        }
        return true;
    };
    std::thread slow([this] { set({{"melody", "1"}}, true); });
    reached.get_future().wait();
    EXPECT_EQ(set({{"melody", "2"}}, true), Texts{});
    EXPECT_EQ(set({{"volume", "3"}, {"melody", "4"}}, true), Texts{});
    released.set_value();
    slow.join();
    EXPECT_EQ(first.told, (Texts{"melody=1", "melody=2", "melody=4"}));
}

TEST_F(NotificationOrderTest, AChangeThatIsNeverToldHoldsUpNobody) {
    registry.addObserver("melody", {&first, false});
    {
        ChangeNotifier::Pending failed = notifier.begin();
        failed.order.tookEffect("melody");
        EXPECT_EQ(set({{"melody", "1"}}, true), Texts{});
        EXPECT_EQ(first.told, Texts{}) << "the one before is still under way";
    }
    EXPECT_EQ(first.told, Texts{"melody=1"});
    EXPECT_EQ(set({{"melody", "2"}}, true), Texts{});
    EXPECT_EQ(first.told, (Texts{"melody=1", "melody=2"}));
}

}  // namespace
}  // namespace vireo::test
