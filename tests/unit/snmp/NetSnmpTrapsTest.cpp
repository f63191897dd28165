#include "snmp/SnmpLibrary.h"
#include "support/SnmpTrapDaemon.h"
#include "support/TrapReceiver.h"
#include "unit/snmp/NetSnmpFixture.h"

namespace vireo::test {
namespace {

using NetSnmpTrapsTest = NetSnmpFixture;

TEST_F(NetSnmpTrapsTest, TrapsOfVersion1CarryTheirNumbersTheCommunityAndAllKindsOfObjects) {
    const SnmpTrapDaemon daemon("geheim");
    const auto session = open(kLoopback, daemon.port(), "geheim");
    const auto wrong = open(kLoopback, daemon.port(), "public");
    for (int generic = 0; generic < 6; ++generic) {
        EXPECT_TRUE(send(*session, generic)) << error;
    }
    EXPECT_TRUE(send(*wrong, 0)) << "nobody can know that it is dropped there";
    EXPECT_TRUE(sendSpecific(*session, 17,
                             {{{1, 1, 7}, std::int32_t{-5}},
                              {{1, 1, 8}, std::uint32_t{4294967295U}},
                              {{1, 1, 9}, std::string("a b")}}))
        << error;
    const auto lines = daemon.lines(7);
    ASSERT_EQ(lines.size(), 7U) << daemon.text();
    const std::string head = "TRAP, SNMP v1, community geheim .1.3.6.1.4.1.32473.1 ";
    for (int generic = 0; generic < 6; ++generic) {
        EXPECT_EQ(lines[static_cast<std::size_t>(generic)],
                  head + std::to_string(generic) + " 0 | ");
    }
    EXPECT_EQ(lines[6], head +
                            "6 .17 | .1.3.6.1.4.1.32473.1.1.1.7 = INTEGER: -5\t"
                            ".1.3.6.1.4.1.32473.1.1.1.8 = Gauge32: 4294967295\t"
                            ".1.3.6.1.4.1.32473.1.1.1.9 = STRING: \"a b\"");
}

TEST_F(NetSnmpTrapsTest, WhatCannotBeSentIsAnsweredSoAndSaidOnce) {
    const auto nowhere = open("", "162");
    EXPECT_FALSE(send(*nowhere, 0));
    EXPECT_EQ(error, "no trap is sent: its receiver has no address");
    EXPECT_FALSE(send(*nowhere, 0));
    EXPECT_EQ(error, "") << "said already";

    const struct {
        const char* host;
        const char* port;
        const char* reason;
    } cases[] = {
        {kLoopback, "0", "no trap is sent to '127.0.0.1', port 0: a port is a number"},
        {kLoopback, "65536", "a port is a number from 1 to 65535"},
        {kLoopback, "snmp", "a port is a number from 1 to 65535"},
        {"no such name", "162", "no trap is sent to 'no such name', port 162: "},
    };
    for (const auto& test : cases) {
        const auto session = open(test.host, test.port);
        EXPECT_FALSE(send(*session, 0));
        EXPECT_NE(error.find(test.reason), std::string::npos) << error;
    }
    const TrapReceiver receiver;
    const auto session = open(kLoopback, receiver.port());
    for (const int unknown : {-1, 6, 2147483647}) {
        EXPECT_FALSE(send(*session, unknown));
        EXPECT_EQ(error, "there is no generic trap " + std::to_string(unknown));
    }
    EXPECT_TRUE(receiver.isEmpty());
    EXPECT_TRUE(send(*session, 5)) << error;
    EXPECT_TRUE(receiver.take());
}

TEST_F(NetSnmpTrapsTest, TheUpTimeGoesOnAlsoWhenItGetsLonger) {
    TrapOrigin origin;
    ASSERT_TRUE(TrapOrigin::parseObjectId("1.3.6.1.4.1.32473.1", origin.enterprise));
    for (const SnmpVersion version : {SnmpVersion::eV1, SnmpVersion::eV2c}) {
        TrapTemplate kept;
        for (const std::uint32_t upTime : {0U, 1U, 127U, 128U, 255U, 32767U, 32768U, 40000U,
                                           8388608U, 2147483647U, 2147483648U, 4294967295U, 5U}) {
            TrapTemplate fresh;
            const std::string again = kept.at(upTime, origin, 3, version, "public");
            const std::string made = fresh.at(upTime, origin, 3, version, "public");
            EXPECT_FALSE(made.empty());
            EXPECT_EQ(again.size(), made.size()) << upTime;
            EXPECT_EQ(again.substr(again.size() - 30), made.substr(made.size() - 30)) << upTime;
        }
        TrapContent content;
        content.generic = 3;
        content.upTime = 40001;
        const std::string patched = kept.at(40001, origin, 3, version, "public");
        const SnmpLibrary::Lock lock = SnmpLibrary::lock();
        const std::string whole = TrapMessage::encode(origin, content, version, "public");
        // Version 2c messages bear a number of their own as well.
        EXPECT_EQ(patched.substr(patched.size() - 30), whole.substr(whole.size() - 30));
    }
}

TEST_F(NetSnmpTrapsTest, ReachesAReceiverThatComesBack) {
    const auto refused = open(kLoopback, freeUdpPort());
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(send(*refused, 0)) << "a trap is not confirmed: " << error;
    }
    const std::string port = freeUdpPort();
    const auto later = open(kLoopback, port);
    EXPECT_TRUE(send(*later, 0));
    const TrapReceiver back(static_cast<unsigned short>(std::stoi(port)));
    EXPECT_TRUE(send(*later, 4)) << error;
    const auto trap = back.take();
    ASSERT_TRUE(trap);
    EXPECT_EQ(trap->generic, 4) << "what was refused before must not cost this one";
}

}  // namespace
}  // namespace vireo::test
