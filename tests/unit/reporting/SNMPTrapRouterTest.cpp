#include <future>
#include <thread>

#include "MgmtAgentIfc.h"
#include "reporting/SNMPTrapRouter.h"
#include "unit/reporting/TrapHouse.h"

namespace vireo::test {
namespace {

using Sent = std::vector<std::string>;

class SNMPTrapRouterTest : public ::testing::Test, protected TrapHouse {
protected:
    SNMPTrapRouterTest() : TrapHouse(kLogDebug) {
        PlatformPorts all = installedPorts();
        all.traps = &traps;
        installPorts(all);
        start();
        set({{"snmp-traps-active", "true"},
             {"snmp-trap-addr", "manager"},
             {"snmp-trap-port", "1"},
             {"snmp-trap-pwd", "a"},
             {"qdc-qcu-active", "true"},
             {"qdc-collection-unit-addr", "unit"},
             {"qdc-collection-unit-port", "2"},
             {"qdc-trap-pwd", "b"},
             {"qdc-snmp-active", "false"},
             {"tcErrorReportSNMP", "true"},
             {"diagnostic-trap-addr", "diagnostic"},
             {"diagnostic-trap-port", "3"},
             {"diagnostic-trap-pwd", "c"},
             {"diagnostic-snmp-active", "false"}});
        ports.forgetLines();
    }

    /// What one trap of the destination makes.
    Sent sentBy(int dest, bool expected = true) {
        EXPECT_EQ(raise(dest, 3), expected);
        return traps.takeSent();
    }
    unsigned observersOf(const std::string& tag) { return service.getNumberObservers(tag); }

    NotedTraps traps;
};

const Sent kToManager{"manager:1 a generic 3"};
const Sent kToUnit{"unit:2 b generic 3"};
const Sent kToBoth{"unit:2 b generic 3", "manager:1 a generic 3"};

TEST_F(SNMPTrapRouterTest, EachDestinationHasItsReceiverAndUnknownOnesNone) {
    EXPECT_EQ(sentBy(0), kToManager);
    EXPECT_EQ(sentBy(1), kToUnit);
    EXPECT_EQ(sentBy(2), Sent{"diagnostic:3 c generic 3"});
    SNMPTrapData data;
    data.setSpecificTrapNo(42);
    EXPECT_TRUE(service.raiseSpecificTrap(LocalMgmtIfc::TRAP_DEST_QDC_COLLECTION_UNIT, data));
    EXPECT_EQ(traps.takeSent(), Sent{"unit:2 b specific 42"});
    EXPECT_EQ(traps.opened, 3);
    for (const int unknown : {3, -1, 2147483647, -2147483647 - 1}) {
        EXPECT_EQ(sentBy(unknown, false), Sent()) << unknown;
    }
    EXPECT_EQ(sentBy(0), kToManager) << "the next one works";
    EXPECT_EQ(ports.lines(kLogError), Sent());
}

TEST_F(SNMPTrapRouterTest, CopiesGoWhereTheSwitchSaysEachOnce) {
    EXPECT_EQ(sentBy(1), kToUnit);
    for (int i = 0; i < 2; ++i) {
        set({{"qdc-snmp-active", "true"}});
        EXPECT_EQ(sentBy(1), kToBoth);
    }
    set({{"qdc-snmp-active", "perhaps"}});
    EXPECT_EQ(sentBy(1), kToBoth) << "an unknown value changes nothing";
    EXPECT_EQ(ports.lines(kLogError),
              Sent{"SNMPTrapRouter::manageableDataChanged changedTag = qdc-snmp-active, newValue = "
                   "perhaps\n"});
    set({{"snmp-traps-active", "false"}});
    EXPECT_EQ(sentBy(1), kToUnit) << "the copy is dropped";
    EXPECT_EQ(ports.lines(kLogError).size(), 1U) << "without a word";
    set({{"snmp-traps-active", "true"}});
    EXPECT_EQ(sentBy(1), kToBoth);
    EXPECT_EQ(sentBy(2), Sent{"diagnostic:3 c generic 3"});
    set({{"qdc-snmp-active", "false"}, {"diagnostic-snmp-active", "true"}});
    EXPECT_EQ(sentBy(1), kToUnit);
    EXPECT_EQ(sentBy(2), (Sent{"diagnostic:3 c generic 3", "manager:1 a generic 3"}));
}

TEST_F(SNMPTrapRouterTest, ASwitchThatWasOnBeforeTheFirstTrapCounts) {
    set({{"qdc-snmp-active", "true"}, {"qdc-collection-unit-addr", ""}});
    EXPECT_EQ(sentBy(1, false), (Sent{":2 b generic 3", "manager:1 a generic 3"}))
        << "the answer is that of the receiver itself";
}

TEST_F(SNMPTrapRouterTest, ChangedItemsCountAtTheNextTrap) {
    EXPECT_EQ(sentBy(0), kToManager);
    EXPECT_EQ(sentBy(0), kToManager);
    EXPECT_EQ(traps.opened, 1) << "the session stays open";
    const struct {
        ItemTexts items;
        Sent sent;
    } steps[] = {
        {{{"snmp-trap-addr", "other"}}, {"other:1 a generic 3"}},
        {{{"snmp-trap-port", "9"}}, {"other:9 a generic 3"}},
        {{{"snmp-trap-pwd", "z"}}, {"other:9 z generic 3"}},
        {{{"snmp-trap-addr", "x"}, {"snmp-trap-port", "8"}, {"snmp-trap-pwd", "y"}},
         {"x:8 y generic 3"}},
    };
    for (const auto& step : steps) {
        const int opened = traps.opened;
        set(step.items);
        EXPECT_EQ(traps.opened, opened) << "nothing is opened by a change";
        EXPECT_EQ(traps.closed, opened);
        EXPECT_EQ(observersOf("snmp-trap-addr"), 0U);
        EXPECT_EQ(sentBy(0), step.sent);
        EXPECT_EQ(traps.opened, opened + 1);
    }
}

TEST_F(SNMPTrapRouterTest, OneThatIsSwitchedOffStaysSilentUntilATrapAfterItIsOn) {
    EXPECT_EQ(sentBy(0), kToManager);
    EXPECT_EQ(observersOf("snmp-traps-active"), 1U);
    set({{"snmp-traps-active", "off"}});
    EXPECT_EQ(sentBy(0), kToManager) << "only \"false\" closes an open session";
    set({{"snmp-traps-active", "false"}});
    EXPECT_EQ(sentBy(0, false), Sent());
    EXPECT_EQ(observersOf("snmp-traps-active"), 0U) << "nothing is observed";
    set({{"snmp-traps-active", "True"}});
    EXPECT_EQ(sentBy(0, false), Sent()) << "only \"true\" opens one";
    set({{"snmp-traps-active", "true"}});
    EXPECT_EQ(traps.opened, 1);
    EXPECT_EQ(sentBy(0), kToManager);
    EXPECT_EQ(ports.lines(kLogError), Sent());
}

TEST_F(SNMPTrapRouterTest, AReceiverThatWasDeletedIsSetUpAnewWithOneSession) {
    SNMPTrapRouter router;
    router.init(&service);
    set({{"qdc-snmp-active", "true"}});
    EXPECT_TRUE(router.raiseGenericTrap(LocalMgmtIfc::TRAP_DEST_QDC_COLLECTION_UNIT, 3));
    EXPECT_EQ(traps.takeSent(), kToBoth);
    for (const int dest : {1, 0, 3, -1, 1}) {
        router.deleteDestination(dest);
    }
    EXPECT_EQ(traps.closed, 2);
    for (const char* tag : {"qdc-snmp-active", "qdc-qcu-active", "snmp-trap-pwd"}) {
        EXPECT_EQ(observersOf(tag), 0U) << tag;
    }
    EXPECT_TRUE(router.raiseGenericTrap(LocalMgmtIfc::TRAP_DEST_QDC_COLLECTION_UNIT, 3));
    EXPECT_EQ(traps.takeSent(), kToBoth);
    set({{"qdc-snmp-active", "false"}});
    EXPECT_TRUE(router.raiseGenericTrap(LocalMgmtIfc::TRAP_DEST_QDC_COLLECTION_UNIT, 3));
    EXPECT_EQ(traps.takeSent(), kToUnit);
    EXPECT_EQ(traps.opened - traps.closed, 2);
    router.deleteDestination(1);
    router.deleteDestination(0);
}

TEST_F(SNMPTrapRouterTest, ATrapRaisedWhileThisThreadRaisesOneIsNotSent) {
    bool nested = true;
    traps.onSend = [&] { nested = raise(1, 3); };
    EXPECT_EQ(sentBy(0), kToManager);
    EXPECT_FALSE(nested);
    EXPECT_EQ(ports.count(kLogWarning, "this thread is raising another one"), 1);
    traps.onSend = nullptr;
    EXPECT_EQ(sentBy(1), kToUnit);
}

/// Raises a trap when it is written to.
struct RaisingAgent : MgmtAgentIfc {
    explicit RaisingAgent(std::function<bool()> raising) : raise(std::move(raising)) {}
    bool setData(ManageableData& /*record*/) override {
        results.push_back(raise());
        return true;
    }
    bool getData(ManageableData& /*record*/) override { return true; }
    bool manageableDataChanged(ManageableData& /*record*/) override { return true; }
    bool resetUserData() override { return true; }

    std::function<bool()> raise;
    std::vector<bool> results;
};

TEST_F(SNMPTrapRouterTest, AWriteOfSeveralItemsDoesNotWaitForATrap) {
    RaisingAgent agent([this] { return raise(0, 3); });
    ASSERT_TRUE(service.registerManagementIdentity("AgentMgmtId", &agent, true));
    const ItemTexts both{{"agent-item", "1"}, {"agent-item-2", "1"}};
    set(both);
    EXPECT_EQ(agent.results, std::vector<bool>{true}) << "nobody else is raising one";

    std::promise<void> sending;
    std::promise<void> goOn;
    traps.onSend = [&] {
        sending.set_value();
        goOn.get_future().wait();
    };
    std::thread raiser([this] { raise(1, 3); });
    sending.get_future().wait();
    set(both);
    goOn.set_value();
    raiser.join();
    EXPECT_EQ(agent.results, (std::vector<bool>{true, false}));
    EXPECT_EQ(ports.count(kLogWarning, "a write of several items cannot wait"), 1);
}

TEST_F(SNMPTrapRouterTest, AnItemThatCannotBeReadCountsAsEmptyWithALine) {
    SNMPTrapRouter router;
    BareContext nowhere;
    router.init(nowhere);
    EXPECT_FALSE(router.raiseGenericTrap(LocalMgmtIfc::TRAP_DEST_SNMP_MANAGER, 1));
    EXPECT_EQ(traps.opened, 0);

    struct OtherContext : Context {
    } other;
    router.init(other);
    EXPECT_EQ(ports.lines(kLogError), Sent{"dynamic cast failed in init.\n"});
}

}  // namespace
}  // namespace vireo::test
