#include "support/SnmpTrapDaemon.h"
#include "support/TrapReceiver.h"
#include "unit/snmp/NetSnmpFixture.h"

namespace vireo::test {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;
using InformTest = NetSnmpFixture;

TEST_F(InformTest, SaysTheSameInVersion2cAndInInformsThatAreConfirmed) {
    const SnmpTrapDaemon daemon("public");
    const SnmpTrapDaemon confirming("public");
    options.receivers = {settingsOf("127.0.0.1:" + daemon.port() + " v2c"),
                         settingsOf("* v2c inform")};
    for (const SnmpTrapDaemon* each : {&daemon, &confirming}) {
        const auto session = open(kLoopback, each->port());
        EXPECT_TRUE(send(*session, 2)) << error;
        EXPECT_TRUE(sendSpecific(*session, 3, {{{9}, std::int32_t{1}}})) << error;
        const auto lines = each->lines(2);
        ASSERT_EQ(lines.size(), 2U) << each->text();
        const char* const kind = each == &daemon ? "TRAP2, SNMP v2c" : "INFORM, SNMP v2c";
        EXPECT_EQ(lines[0].find(kind), 0U) << lines[0];
        EXPECT_NE(lines[0].find("= OID: .1.3.6.1.6.3.1.1.5.3"), std::string::npos) << lines[0];
        EXPECT_NE(lines[1].find("= OID: .1.3.6.1.4.1.32473.1.0.3\t.1.3.6.1.4.1.32473.1.9 = "
                                "INTEGER: 1"),
                  std::string::npos)
            << lines[1];
    }
    EXPECT_EQ(ports.lines(kLogError), std::vector<std::string>());
}

TEST_F(InformTest, ADeadReceiverDelaysNoOtherAndIsGivenUpWithALine) {
    constexpr const char* kGivenUp = "was given up: it does not answer";
    const SnmpTrapDaemon daemon("public");
    const TrapReceiver blackHole;  // takes everything and confirms nothing
    const std::string refused = freeUdpPort();
    options.receivers = {settingsOf("* v2c inform")};
    options.informTimeout = milliseconds(100);
    options.informRetries = 1;
    options.queueLength = 30;
    const auto dead = open(kLoopback, blackHole.port());
    const auto absent = open(kLoopback, refused);
    const auto alive = open(kLoopback, daemon.port());
    constexpr std::size_t kTraps = 25;
    const Clock::time_point start = Clock::now();
    for (std::size_t i = 0; i < kTraps; ++i) {
        for (const auto* session : {&dead, &absent, &alive}) {
            EXPECT_TRUE(send(**session, 2)) << error;
        }
    }
    EXPECT_LT(Clock::now() - start, milliseconds(500)) << "whoever raises a trap does not wait";
    EXPECT_EQ(daemon.lines(kTraps).size(), kTraps);
    EXPECT_LT(Clock::now() - start, milliseconds(2000))
        << "the dead ones alone take 25 times 200 ms";
    for (int i = 0; i < 40 && send(*dead, 2); ++i) {
    }
    EXPECT_NE(error.find("30 wait for it already"), std::string::npos) << error;
    // The first one was sent twice.
    EXPECT_TRUE(blackHole.takeBytes(milliseconds(1000)));
    EXPECT_TRUE(blackHole.takeBytes(milliseconds(1000)));
    const auto end = Clock::now() + std::chrono::seconds(5);
    while (ports.count(kLogError, kGivenUp) < 2 && Clock::now() < end) {
        std::this_thread::sleep_for(milliseconds(5));
    }
    EXPECT_TRUE(blackHole.takeBytes(milliseconds(1000))) << "and the second one is tried";
    stop();
    EXPECT_EQ(ports.count(kLogError, kGivenUp), 2) << "once for each, not once for each trap";
    EXPECT_FALSE(send(*alive, 2));
    EXPECT_EQ(error, "traps have ended");
}

}  // namespace
}  // namespace vireo::test
