#include <filesystem>

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
        m_phone.set({"snmp-traps-active=true", "snmp-trap-addr=127.0.0.1",
                     "snmp-trap-port=" + manager.port(), "snmp-trap-pwd=one", "qdc-qcu-active=true",
                     "qdc-collection-unit-addr=127.0.0.1",
                     "qdc-collection-unit-port=" + unit.port(), "qdc-trap-pwd=two",
                     "tcErrorReportSNMP=true", "diagnostic-trap-addr=localhost",
                     "diagnostic-trap-port=" + diagnostic.port(), "diagnostic-trap-pwd=three"});
    }

    /// Each trap is told from the others by its specific number.
    int raise(const std::string& dest) {
        const std::string file = m_phone.file("trap");
        writeFile(file, std::to_string(++m_number) + ";0;\n");
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

    SnmpTrapDaemon manager{"one"};
    SnmpTrapDaemon unit{"two"};
    SnmpTrapDaemon diagnostic{"three"};
    RunningPhone m_phone{RunningPhone::Prepared{}};

    const bool m_hadIndexes = std::filesystem::exists("/var/lib/snmp/cert_indexes");

private:
    int m_number = 0;
};

TEST_F(TrapsTest, EachReceiverGetsItsTrapsAndTheItemsOfTheMomentCount) {
    EXPECT_EQ(raise("manager"), 0);
    EXPECT_TRUE(isLast(manager, 1, "one"));
    EXPECT_EQ(raise("qdc"), 0);
    EXPECT_TRUE(isLast(unit, 1, "two"));
    EXPECT_EQ(raise("2"), 0);
    EXPECT_TRUE(isLast(diagnostic, 1, "three"));

    m_phone.set({"qdc-snmp-active=true"});
    EXPECT_EQ(raise("qdc"), 0);
    EXPECT_TRUE(isLast(unit, 2, "two"));
    EXPECT_TRUE(isLast(manager, 2, "one")) << "one copy";

    m_phone.set({"snmp-traps-active=false"});
    EXPECT_EQ(raise("qdc"), 0);
    EXPECT_TRUE(isLast(unit, 3, "two"));
    EXPECT_EQ(raise("manager"), 1);
    m_phone.set({"snmp-traps-active=true"});
    EXPECT_EQ(raise("manager"), 0);
    EXPECT_TRUE(isLast(manager, 3, "one")) << "nothing came while it was off";

    m_phone.set({"snmp-trap-addr=localhost", "snmp-trap-pwd=three"});
    m_phone.set({"snmp-trap-port=" + diagnostic.port()});
    EXPECT_EQ(raise("manager"), 0);
    EXPECT_TRUE(isLast(diagnostic, 2, "three"));
    m_phone.set({"snmp-trap-addr="});
    EXPECT_EQ(raise("manager"), 1);
    m_phone.set({"snmp-trap-addr=127.0.0.1"});
    EXPECT_EQ(raise("manager"), 0);
    EXPECT_TRUE(isLast(diagnostic, 3, "three"));
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
