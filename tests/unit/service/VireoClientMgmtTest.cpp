#include "unit/service/ServiceHouse.h"

namespace vireo::test {
namespace {

using VireoClientMgmtTest = ServiceHouse;

TEST_F(VireoClientMgmtTest, AContextOfTheWrongTypeLeavesAServiceThatRefuses) {
    Context wrong;
    service.init(wrong);
    EXPECT_EQ(ports.count(kLogError, "dynamic cast failed in init."), 1);
    EXPECT_EQ(ports.count(kLogDebug, "VCMS - initialised"), 0);
    ManageableData record = recordOf({"melody=1"});
    EXPECT_FALSE(service.setData(record));
    EXPECT_FALSE(service.getData(record));
    EXPECT_EQ(service.findSchemaName("melody"), "");
}

TEST_F(VireoClientMgmtTest, AStoreThatComesLaterIsFoundThen) {
    context.store = nullptr;
    start();
    std::string value;
    EXPECT_FALSE(service.getData("melody", value));
    context.store = store.get();
    EXPECT_TRUE(service.getData("melody", value));
    EXPECT_EQ(value, "7");
    const std::size_t asked = context.asked.size();
    EXPECT_TRUE(service.getData("melody", value));
    EXPECT_EQ(context.asked.size(), asked) << "what was found is kept";
}

TEST_F(VireoClientMgmtTest, SoftwareTypeIsAskedUntilItIsKnown) {
    start();
    const auto become = [this](const char* type) {
        ManageableData record = recordOf({std::string("software-type=") + type});
        EXPECT_TRUE(service.setData(record));
        return service.getSoftwareType();
    };
    EXPECT_EQ(service.getSoftwareType(), 0);
    EXPECT_EQ(become("varnick KSP"), 0);
    EXPECT_EQ(become("Varnick TDM"), 3);
    EXPECT_EQ(become("Varnick SIP"), 3) << "once known it stays";
}

TEST_F(VireoClientMgmtTest, TheValueCacheTakesRecordsAndLeavesOutNeverCachedTags) {
    start();
    ManageableData record = recordOf({"lazy=told", "time=12:00"});
    record.addRootId("lazy-2", nullptr);
    service.updateVCMSCache(record);
    std::string value;
    EXPECT_TRUE(service.fetchFromVCMSCache("lazy", value));
    EXPECT_EQ(value, "told");
    EXPECT_FALSE(service.fetchFromVCMSCache("time", value));
    EXPECT_FALSE(service.fetchFromVCMSCache("lazy-2", value));
    service.invalidateVCMSCache();
    EXPECT_FALSE(service.fetchFromVCMSCache("lazy", value));
}

TEST_F(VireoClientMgmtTest, ManagersThatDoNothingYetRefuseHonestly) {
    start();
    ManageableData record = recordOf({"a-file-request=1", "x-locked-config-menus-file-y=1"});
    EXPECT_FALSE(service.setData(record));
    EXPECT_EQ(refusalsOf(record),
              (Words{"a-file-request: Not supported", "x-locked-config-menus-file-y: Unknown"}));
    EXPECT_FALSE(service.getData(record));
}

struct Subscriber : Executable, RemoteMgmtCallbackIfc {
    void informRemoteProgress(int, eRemoteOperationType) override {}
    void informRemoteWarning(eRemoteOperationType type) override { warnings.push_back(type); }
    std::vector<int> warnings;
};

TEST_F(VireoClientMgmtTest, OneRemoteSubscriberIsWarnedOfMemoryTrouble) {
    start();
    Subscriber first;
    Subscriber second;
    const auto warn = [this](const char* value) {
        ManageableData record = recordOf({std::string("memory-monitor-remote-callback=") + value});
        EXPECT_TRUE(service.setData(record));
    };
    warn("1");
    EXPECT_FALSE(service.unsubscribeForRemoteProgress(&first));
    EXPECT_TRUE(service.subscribeForRemoteProgress(&first));
    EXPECT_FALSE(service.subscribeForRemoteProgress(&second));
    EXPECT_FALSE(service.unsubscribeForRemoteProgress(&second));
    warn("1");
    warn("2");
    warn("3");
    EXPECT_EQ(first.warnings, (std::vector<int>{3, 4}));
    EXPECT_TRUE(service.unsubscribeForRemoteProgress(&first));
    EXPECT_FALSE(service.subscribeForRemoteProgress(nullptr));
    EXPECT_TRUE(service.subscribeForRemoteProgress(&second));
    service.peerLeft(first);
    EXPECT_FALSE(service.subscribeForRemoteProgress(&first));
    service.peerLeft(second);
    EXPECT_TRUE(service.subscribeForRemoteProgress(&first));
    EXPECT_EQ(ports.count(kLogWarning, "subscription already in use"), 2);
    EXPECT_EQ(ports.count(kLogWarning, "cannot unsubscribe"), 2);
}

}  // namespace
}  // namespace vireo::test
