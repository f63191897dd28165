#include "items/AgentRegistrations.h"
#include "unit/items/ItemHouse.h"

namespace vireo::test {
namespace {

class AgentRegistrationsTest : public ItemHouse {
protected:
    AgentRegistrationsTest() {
        load();
        face.onObserve = [this](const std::string& rootId, MgmtAgentIfc* agent, bool bulk) {
            return registrations.observeManageableData(rootId, agent, bulk);
        };
    }

    unsigned change(const Words& assignments) {
        return notifier.announce(recordOf(assignments), notifier.begin());
    }

    AgentRegistrations registrations{catalogue, collections, registry, cache};
    TestAgent a;
    TestAgent b;
};

TEST_F(AgentRegistrationsTest, AnOwnerTakesOverWhatWasKeptForIt) {
    set({{"lazy", "kept"}}, true);
    cache.update("lazy", "kept");
    EXPECT_FALSE(registrations.registerManagementIdentity("LazyMgmtId", nullptr, false));
    EXPECT_FALSE(registrations.registerManagementIdentity("", &a, false));
    EXPECT_EQ(get("lazy"), "kept");
    a.onGet = [](ManageableData& record) { return record.populate("lazy", "owned"); };
    EXPECT_TRUE(registrations.registerManagementIdentity("LazyMgmtId", &a, false));
    EXPECT_FALSE(registrations.registerManagementIdentity("LazyMgmtId", &b, false));
    EXPECT_FALSE(catalogue.master().getDocument("lazy"));
    std::string value;
    EXPECT_FALSE(cache.fetch("lazy", value));
    EXPECT_EQ(get("lazy"), "owned") << "the first one stays";
    EXPECT_TRUE(catalogue.master().getDocument("lazyItems"))
        << "a list that names a document of the configuration deletes nothing";
}

TEST_F(AgentRegistrationsTest, ObservingTwiceIsToldTwiceAndStoppedOnceATime) {
    EXPECT_EQ(registrations.observeManageableData("melody", &a, false), 1);
    EXPECT_EQ(registrations.observeManageableData("melody", &a, false), 1);
    EXPECT_EQ(registrations.observeManageableData("melody", &b, true), 1);
    EXPECT_EQ(registry.getNumberObservers("melody"), 1U);
    EXPECT_EQ(change({"melody=1"}), 3U);
    EXPECT_TRUE(registrations.stopObservingManageableData("melody", &a));
    EXPECT_EQ(change({"melody=2"}), 2U);
    EXPECT_TRUE(registrations.stopObservingManageableData("melody", &a));
    EXPECT_EQ(change({"melody=3"}), 1U);
    EXPECT_TRUE(registrations.stopObservingManageableData("melody", &a)) << "not there any more";
    EXPECT_TRUE(registrations.stopObservingManageableData("melody", &b));
    EXPECT_TRUE(registrations.stopObservingManageableData("melody", &b)) << "nobody is";
    EXPECT_EQ(a.told, (Texts{"melody=1", "melody=1", "melody=2"}));
    EXPECT_EQ(ports.count(kLogDebug, "UnRegisterObserver - 1 observers found for melody"), 4);
    EXPECT_EQ(ports.count(kLogDebug, "UnRegisterObserver - last observer unregistered"), 1);
    EXPECT_EQ(ports.count(kLogDebug, "UnRegisterObserver - No observer was registered for"), 1);
}

TEST_F(AgentRegistrationsTest, WhatCannotBeObservedAnswersZeroAndALine) {
    EXPECT_EQ(registrations.observeManageableData("melody", nullptr, false), 0);
    EXPECT_EQ(registrations.observeManageableData("", &a, false), 0);
    EXPECT_EQ(registrations.observeManageableData("nothing", &a, false), 0);
    EXPECT_EQ(ports.lines(kLogError),
              (Texts{"VCMS observeManageableData - NULL manageableIfc received",
                     "VCMS observeManageableData - empty rootID received",
                     "Node Id nothing does not exist"}));
    EXPECT_FALSE(registrations.stopObservingManageableData("nothing", &a));
    EXPECT_FALSE(registrations.stopObservingManageableData("melody", nullptr));
    EXPECT_FALSE(registrations.stopObservingManageableData("pair", &a));
    EXPECT_EQ(registrations.observeManageableData(kAllData, &a, false), 1);
    EXPECT_EQ(change({"nothing=1"}), 1U);
}

TEST_F(AgentRegistrationsTest, ListsAndCollectionsObserveWhatExists) {
    EXPECT_EQ(registrations.observeManageableData("pair", &a, true), 1);
    EXPECT_EQ(change({"melody=1", "lazy=2", "volume=3"}), 1U);
    EXPECT_EQ(a.told, Texts{"melody=1 lazy=2"});
    EXPECT_EQ(registrations.observeManageableData("odd", &b, false), 0) << "one is no item";
    EXPECT_EQ(change({"eager=1"}), 1U) << "the others are observed";
    using List = std::list<std::string>;
    EXPECT_EQ(registrations.observeManageableData(List{}, &b, false), 0);
    EXPECT_EQ(registrations.observeManageableData(List{"volume", "nothing", "key-1"}, &b, false),
              0);
    EXPECT_EQ(registrations.observeManageableData(List{"volume", "overlap"}, &b, false), 1);
    EXPECT_EQ(change({"volume=4", "key-1=5"}), 4U);
    // Collections that contain each other end, and one that is an item too is the collection.
    EXPECT_EQ(registrations.observeManageableData("loop", &a, false), 1);
    EXPECT_EQ(change({"plain=1"}), 0U);
}

}  // namespace
}  // namespace vireo::test
