#include <filesystem>
#include <fstream>

#include "support/RunningPhone.h"
#include "support/SnmpTrapDaemon.h"

namespace vireo::test {
namespace {

using Items = std::vector<std::string>;

/// A phone with its three receivers, each a real one with a community of its own.
class TrapsTest : public ::testing::Test {
protected:
    TrapsTest() {
        m_phone.start();
        set({"snmp-traps-active=true", "snmp-trap-addr=127.0.0.1",
             "snmp-trap-port=" + manager.port(), "snmp-trap-pwd=one", "qdc-qcu-active=true",
             "qdc-collection-unit-addr=127.0.0.1", "qdc-collection-unit-port=" + unit.port(),
             "qdc-trap-pwd=two", "tcErrorReportSNMP=true", "diagnostic-trap-addr=localhost",
             "diagnostic-trap-port=" + diagnostic.port(), "diagnostic-trap-pwd=three"});
    }

    void set(const Items& items) {
        Items command{"set"};
        command.insert(command.end(), items.begin(), items.end());
        const Outcome outcome = m_phone.ctl(command);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    }
    /// Each trap is told from the others by its specific number.
    int raise(const std::string& dest) {
        const std::string file = m_phone.file("trap");
        std::ofstream(file) << ++m_number << ";0;\n";
        return m_phone.ctl({"trap", "specific", dest, file}).exitCode;
    }
    /// Whether the last trap is the one that came there last, as number `count`.
    ::testing::AssertionResult isLast(const SnmpTrapDaemon& daemon, std::size_t count,
                                      const std::string& community) {
        const auto lines = daemon.lines(count);
        const std::string end = "community " + community + " .1.3.6.1.4.1.32473.1 6 ." +
                                std::to_string(m_number) + " | ";
        if (lines.size() == count && lines.back().find(end) != std::string::npos) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << end << " is not number " << count << " of\n"
                                             << daemon.text();
    }
    /// Nothing more comes than what is there, as the traps behind it show.
    std::size_t countOf(const SnmpTrapDaemon& daemon) { return daemon.lines(0).size(); }

    SnmpTrapDaemon manager{"one"};
    SnmpTrapDaemon unit{"two"};
    SnmpTrapDaemon diagnostic{"three"};
    RunningPhone m_phone{RunningPhone::Prepared{}};

    const bool m_hadIndexes = std::filesystem::exists("/var/lib/snmp/cert_indexes");

private:
    int m_number = 0;
};

TEST_F(TrapsTest, EachReceiverGetsItsTrapsAndCopiesGoAsTheSwitchesSay) {
    EXPECT_EQ(raise("manager"), 0);
    EXPECT_TRUE(isLast(manager, 1, "one"));
    EXPECT_EQ(raise("qdc"), 0);
    EXPECT_TRUE(isLast(unit, 1, "two"));
    EXPECT_EQ(raise("2"), 0);
    EXPECT_TRUE(isLast(diagnostic, 1, "three"));

    set({"qdc-snmp-active=true"});
    EXPECT_EQ(raise("qdc"), 0);
    EXPECT_TRUE(isLast(unit, 2, "two"));
    EXPECT_TRUE(isLast(manager, 2, "one"));
    set({"qdc-snmp-active=false"});
    EXPECT_EQ(raise("qdc"), 0);
    EXPECT_TRUE(isLast(unit, 3, "two"));
    for (int i = 0; i < 2; ++i) {
        set({"qdc-snmp-active=true"});
    }
    EXPECT_EQ(raise("qdc"), 0);
    EXPECT_TRUE(isLast(unit, 4, "two"));
    EXPECT_TRUE(isLast(manager, 3, "one")) << "one copy, and none while it was off";

    set({"snmp-traps-active=false"});
    EXPECT_EQ(raise("qdc"), 0);
    EXPECT_TRUE(isLast(unit, 5, "two"));
    EXPECT_EQ(raise("manager"), 1);
    set({"snmp-traps-active=true"});
    EXPECT_EQ(raise("manager"), 0);
    EXPECT_TRUE(isLast(manager, 4, "one")) << "nothing came while it was off";
}

TEST_F(TrapsTest, ChangedItemsSendTheNextTrapElsewhereOnce) {
    EXPECT_EQ(raise("manager"), 0);
    EXPECT_TRUE(isLast(manager, 1, "one"));
    set({"snmp-trap-pwd=two"});
    set({"snmp-trap-port=" + unit.port()});
    EXPECT_EQ(raise("manager"), 0);
    EXPECT_TRUE(isLast(unit, 1, "two"));
    set({"snmp-trap-addr=localhost"});
    EXPECT_EQ(raise("manager"), 0);
    EXPECT_TRUE(isLast(unit, 2, "two"));
    set({"snmp-trap-addr=127.0.0.1", "snmp-trap-port=" + diagnostic.port(), "snmp-trap-pwd=three"});
    EXPECT_EQ(raise("manager"), 0);
    EXPECT_TRUE(isLast(diagnostic, 1, "three"));
    set({"snmp-trap-addr="});
    EXPECT_EQ(raise("manager"), 1);
    set({"snmp-trap-addr=127.0.0.1"});
    EXPECT_EQ(raise("manager"), 0);
    EXPECT_TRUE(isLast(diagnostic, 2, "three"));
    EXPECT_EQ(countOf(manager), 1U);
    EXPECT_EQ(countOf(unit), 2U);
}

TEST_F(TrapsTest, TheCommandSaysWhetherItWasSentAndWhatIsWrong) {
    const struct {
        Items arguments;
        int exitCode;
        const char* out;
        const char* err;
    } rows[] = {
        {{"trap", "generic", "manager", "3"}, 0, "sent\n", ""},
        {{"--json", "trap", "generic", "0", "5"},
         0,
         "{\"method\":\"raiseGenericTrap\",\"parameters\":{\"result\":true}}\n",
         ""},
        {{"--protocol", "xml", "trap", "generic", "diagnostic", "0"}, 0, "sent\n", ""},
        {{"trap", "generic", "manager", "6"}, 1, "", "not sent: "},
        {{"trap", "generic", "3", "1"}, 1, "", "not sent: "},
        {{"trap", "generic", "-1", "1"}, 1, "", "not sent: "},
        {{"trap", "generic", "manager"}, 2, "", "a generic trap has a number, 0 to 5"},
        {{"trap", "generic", "nobody", "1"}, 2, "", "'nobody' is no receiver"},
        {{"trap", "specific", "manager", "/no/such/file"}, 2, "", "cannot read '/no/such/file'"},
        {{"trap", "specific", "manager", "/etc/hostname"}, 1, "", "not sent: "},
    };
    for (const auto& row : rows) {
        const Outcome outcome = m_phone.ctl(row.arguments);
        EXPECT_EQ(outcome.exitCode, row.exitCode) << row.arguments.back() << outcome.err;
        EXPECT_EQ(outcome.out, row.out);
        EXPECT_NE(outcome.err.find(row.err), std::string::npos) << outcome.err;
    }
}

TEST_F(TrapsTest, TheSettingsSayWhoConfirmsAndTheMachinesOwnFilesStayAlone) {
    m_phone.crash();
    m_phone.start({"--trap-receiver", "localhost v2c inform", "--trap-receiver", "* v2c",
                   "--trap-enterprise", "1.3.6.1.4.1.99999"});
    EXPECT_EQ(m_phone.ctl({"trap", "generic", "diagnostic", "0"}).exitCode, 0);
    EXPECT_EQ(m_phone.ctl({"trap", "generic", "manager", "0"}).exitCode, 0);
    const auto informs = diagnostic.lines(1);
    ASSERT_EQ(informs.size(), 1U) << diagnostic.text();
    EXPECT_EQ(informs[0].find("INFORM, SNMP v2c, community three"), 0U) << informs[0];
    const auto traps = manager.lines(1);
    ASSERT_EQ(traps.size(), 1U) << manager.text();
    EXPECT_EQ(traps[0].find("TRAP2, SNMP v2c, community one"), 0U) << traps[0];
    // What the library's own start would have made.
    EXPECT_FALSE(std::filesystem::exists("/var/lib/snmp/cert_indexes") && !m_hadIndexes);
}

}  // namespace
}  // namespace vireo::test
