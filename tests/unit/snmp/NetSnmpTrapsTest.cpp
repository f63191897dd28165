#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>

#include "snmp/NetSnmpTraps.h"
#include "snmp/SNMPTrapData.h"
#include "snmp/SNMPVarbindTrapDataItem.h"
#include "snmp/SnmpLibrary.h"
#include "snmp/TrapReceiverText.h"
#include "support/SnmpTrapDaemon.h"
#include "support/TemporaryDirectory.h"
#include "support/TestPorts.h"
#include "support/TrapReceiver.h"

namespace vireo::test {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr const char* kLoopback = "127.0.0.1";
constexpr const char* kUsers =
    "user = phone\nauth = SHA-256\nauth-passphrase = signed-signed\n"
    "priv-passphrase = hidden-hidden\n";
constexpr const char* kDaemonUser = " phone SHA-256 signed-signed AES hidden-hidden\n";

ReceiverSettings settingsOf(const std::string& text) {
    std::string error;
    const auto parsed = TrapReceiverText::parse(text, error);
    EXPECT_TRUE(parsed) << error;
    return parsed.value_or(ReceiverSettings());
}

class NetSnmpTrapsTest : public ::testing::Test {
protected:
    std::unique_ptr<TrapSession> open(const std::string& host, const std::string& port,
                                      const std::string& password = "public") {
        if (!m_traps) {
            m_traps = std::make_unique<NetSnmpTraps>(m_root.path().string(), options);
        }
        return m_traps->open({host, port, password});
    }
    bool send(TrapSession& session, int generic) {
        error.clear();
        return session.sendGeneric(generic, error);
    }
    bool sendSpecific(TrapSession& session, int number, std::vector<TrapVarbind> varbinds = {}) {
        SNMPTrapData data;
        data.setSpecificTrapNo(number);
        auto item = std::make_unique<SNMPVarbindTrapDataItem>();
        for (TrapVarbind& varbind : varbinds) {
            item->add(std::move(varbind.subIdentifiers), std::move(varbind.value));
        }
        data.addSNMPTrapDataItem(std::move(item));
        error.clear();
        return session.sendSpecific(data, error);
    }
    void writeUsers(mode_t mode) {
        const std::string path = m_root.file("snmp-users.conf");
        std::ofstream(path) << kUsers;
        ::chmod(path.c_str(), mode);
    }
    void stop() { m_traps->stop(); }
    /// Whether there is an error line with this text, once, before long.
    bool saidInTime(const char* text) {
        const auto end = Clock::now() + std::chrono::seconds(5);
        while (ports.count(kLogError, text) == 0 && Clock::now() < end) {
            std::this_thread::sleep_for(milliseconds(1));
        }
        return ports.count(kLogError, text) == 1;
    }
    /// The next session is of a port with other options. Sessions have ended before.
    void end() { m_traps.reset(); }

    TestPorts ports{kLogWarning};
    TrapOptions options;
    std::string error;

private:
    TemporaryDirectory m_root;
    std::unique_ptr<NetSnmpTraps> m_traps;
};

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

TEST_F(NetSnmpTrapsTest, SaysTheSameInVersion2cAndInInformsThatAreConfirmed) {
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

TEST_F(NetSnmpTrapsTest, Version3IsSignedAndCiphered) {
    char name[64] = {};
    ::gethostname(name, 27);
    std::string engine = "0x80007ed904";
    for (const char* letter = name; *letter != '\0'; ++letter) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(*letter));
        engine += digits;
    }
    writeUsers(0600);
    const SnmpTrapDaemon daemon("public", "createUser -e " + engine + kDaemonUser + "createUser" +
                                              kDaemonUser + "authUser log phone priv");
    for (const char* version : {"* v3 inform user=phone", "* v3 user=phone"}) {
        options.receivers = {settingsOf(version)};
        auto session = open(kLoopback, daemon.port());
        EXPECT_TRUE(send(*session, 0)) << error;
        EXPECT_TRUE(send(*session, 1)) << error;
        const std::size_t expected = version[5] == 'i' ? 2 : 4;
        const auto lines = daemon.lines(expected, std::chrono::seconds(5));
        EXPECT_EQ(lines.size(), expected) << daemon.text();
        EXPECT_EQ(ports.lines(kLogError), std::vector<std::string>());
        session.reset();
        end();
    }
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

TEST_F(NetSnmpTrapsTest, ReachesIpv6AndNamesAndAReceiverThatComesBack) {
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

    const auto named = open("localhost", port);
    EXPECT_TRUE(send(*named, 1)) << error;
    EXPECT_TRUE(open("::1", port) != nullptr);
    EXPECT_TRUE(send(*open("::1", port), 1)) << error;
}

TEST_F(NetSnmpTrapsTest, ADeadReceiverDelaysNoOtherAndIsGivenUpWithALine) {
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

TEST_F(NetSnmpTrapsTest, WhoDoesNotSayWhoItIsDelaysNoOther) {
    writeUsers(0600);
    const SnmpTrapDaemon daemon("public");
    const TrapReceiver blackHole;
    const TrapReceiver plain;
    const std::string refused = freeUdpPort();
    options.receivers = {settingsOf("127.0.0.1:" + blackHole.port() + " v3 inform user=phone"),
                         settingsOf("127.0.0.1:" + refused + " v3 inform user=phone"),
                         settingsOf("127.0.0.1:" + daemon.port() + " v2c inform")};
    options.informTimeout = std::chrono::seconds(20);
    const auto dead = open(kLoopback, blackHole.port());
    const auto absent = open(kLoopback, refused);
    const auto alive = open(kLoopback, daemon.port());
    const auto direct = open(kLoopback, plain.port());
    EXPECT_TRUE(send(*dead, 0)) << error;
    EXPECT_TRUE(send(*absent, 0)) << error;
    EXPECT_TRUE(blackHole.takeBytes(std::chrono::seconds(5))) << "it is asked";
    const Clock::time_point start = Clock::now();
    EXPECT_TRUE(send(*direct, 0)) << error;
    EXPECT_TRUE(send(*alive, 0)) << error;
    EXPECT_TRUE(plain.take());
    EXPECT_EQ(daemon.lines(1).size(), 1U);
    stop();
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(ports.count(kLogWarning, "was given up with its session"), 2);
}

TEST_F(NetSnmpTrapsTest, AReceiverOfVersion3IsAskedAFewTimes) {
    writeUsers(0600);
    const TrapReceiver blackHole;
    options.receivers = {settingsOf("* v3 inform user=phone")};
    options.informTimeout = milliseconds(50);
    options.informRetries = 1;
    const auto session = open(kLoopback, blackHole.port());
    EXPECT_TRUE(send(*session, 0)) << error;
    EXPECT_TRUE(saidInTime("was given up: it does not answer"));
    EXPECT_TRUE(blackHole.takeBytes(milliseconds(0)));
    EXPECT_TRUE(blackHole.takeBytes(milliseconds(0)));
    EXPECT_TRUE(blackHole.isEmpty());
}

TEST_F(NetSnmpTrapsTest, AReceiverThatDoesNotKnowTheUserIsNamed) {
    writeUsers(0600);
    const SnmpTrapDaemon daemon("public",
                                "createUser other SHA-256 signed-signed AES hidden-hidden\n"
                                "authUser log other priv");
    options.receivers = {settingsOf("* v3 inform user=phone")};
    const auto session = open(kLoopback, daemon.port());
    EXPECT_TRUE(send(*session, 0)) << error;
    EXPECT_TRUE(saidInTime("it does not know the user, or has other passphrases"));
}

TEST_F(NetSnmpTrapsTest, ReadsNoSecretThatOthersCanRead) {
    writeUsers(0644);
    options.receivers = {settingsOf("* v3 inform user=phone")};
    const TrapReceiver receiver;
    const auto session = open(kLoopback, receiver.port());
    EXPECT_TRUE(send(*session, 0)) << "it waits for its turn";
    EXPECT_TRUE(saidInTime("others than its owner may use it"));
    EXPECT_TRUE(receiver.isEmpty());
}

TEST(TrapReceiverText, TakesReceiversApartAndNamesWhatIsWrong) {
    const struct {
        const char* text;
        const char* host;
        const char* port;
        SnmpVersion version;
        bool isConfirmed;
        const char* user;
    } rows[] = {
        {"192.0.2.1 v1", "192.0.2.1", "", SnmpVersion::eV1, false, ""},
        {"  host.example:1162\tv2c  inform ", "host.example", "1162", SnmpVersion::eV2c, true, ""},
        {"* v3 user=phone inform", "*", "", SnmpVersion::eV3, true, "phone"},
        {"2001:db8::1 v2c", "2001:db8::1", "", SnmpVersion::eV2c, false, ""},
        {"[2001:db8::1]:99 v2c", "2001:db8::1", "99", SnmpVersion::eV2c, false, ""},
        {"[::1] v1", "::1", "", SnmpVersion::eV1, false, ""},
    };
    std::string error;
    for (const auto& row : rows) {
        const auto parsed = TrapReceiverText::parse(row.text, error);
        ASSERT_TRUE(parsed) << row.text << error;
        EXPECT_EQ(parsed->host, row.host);
        EXPECT_EQ(parsed->port, row.port);
        EXPECT_EQ(parsed->version, row.version);
        EXPECT_EQ(parsed->isConfirmed, row.isConfirmed);
        EXPECT_EQ(parsed->user, row.user);
    }
    for (const char* wrong : {"", "host", "host v4", "host: v1", "host:0 v1", "host:99999 v1",
                              ":1 v1", "[::1 v1", "[::1]x v1", "host v1 inform", "host v3",
                              "host v2c user=a", "host v3 user=", "host v1 x", "[::1]: v1"}) {
        EXPECT_FALSE(TrapReceiverText::parse(wrong, error)) << wrong;
        EXPECT_NE(error.find("is no receiver of traps: "), std::string::npos) << error;
    }
}

TEST(TrapReceiverText, TheFirstThatFitsCountsAndOthersGetVersion1) {
    TrapOptions options;
    options.receivers = {settingsOf("a:1 v2c"), settingsOf("a v2c inform"), settingsOf("b v2c")};
    EXPECT_FALSE(findReceiver(options, "a", "1").isConfirmed);
    EXPECT_EQ(findReceiver(options, "a", "1").version, SnmpVersion::eV2c);
    EXPECT_TRUE(findReceiver(options, "a", "2").isConfirmed);
    EXPECT_EQ(findReceiver(options, "c", "1").version, SnmpVersion::eV1);
}

}  // namespace
}  // namespace vireo::test
