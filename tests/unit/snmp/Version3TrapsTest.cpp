#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <functional>

#include "support/SnmpTrapDaemon.h"
#include "support/TrapReceiver.h"
#include "unit/snmp/NetSnmpFixture.h"

namespace vireo::test {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

const std::string kDaemonUser = " phone SHA-256 signed-signed AES hidden-hidden\n";
const std::string kDaemonUsers = "createUser" + kDaemonUser + "authUser log phone priv";

bool hasIpv6() {
    const FileDescriptor socket(::socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_addr = in6addr_loopback;
    return ::bind(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
}

/// The engine of the phone, as settings of receivers have it.
std::string ownEngine() {
    char name[64] = {};
    ::gethostname(name, 27);
    std::string engine = "0x80007ed904";
    for (const char* letter = name; *letter != '\0'; ++letter) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(*letter));
        engine += digits;
    }
    return engine;
}

class Version3TrapsTest : public NetSnmpFixture {
protected:
    Version3TrapsTest() {
        std::ofstream(m_users) << "user = phone\nauth = SHA-256\nauth-passphrase = signed-signed\n"
                                  "priv-passphrase = hidden-hidden\n";
        letReadUsers(0600);
    }
    void letReadUsers(mode_t mode) { ::chmod(m_users.c_str(), mode); }

private:
    const std::string m_users = root.file("snmp-users.conf");
};

/// By the address of the receiver.
class Version3TrapsOver : public Version3TrapsTest,
                          public ::testing::WithParamInterface<const char*> {};

TEST_P(Version3TrapsOver, AreSignedAndCiphered) {
    const bool isLong = std::string(GetParam()) == "::1";
    if (isLong && !hasIpv6()) {
        GTEST_SKIP() << "this machine has no [::1]";
    }
    const SnmpTrapDaemon daemon("public",
                                "createUser -e " + ownEngine() + kDaemonUser + kDaemonUsers, {},
                                isLong ? SnmpTrapDaemon::kIpv6 : SnmpTrapDaemon::kIpv4);
    std::size_t expected = 0;
    for (const char* version : {"* v3 inform user=phone", "* v3 user=phone"}) {
        options.receivers = {settingsOf(version)};
        auto session = open(GetParam(), daemon.port());
        EXPECT_TRUE(send(*session, 0)) << error;
        EXPECT_TRUE(send(*session, 1)) << error;
        expected += 2;
        EXPECT_EQ(daemon.lines(expected).size(), expected) << daemon.text();
        EXPECT_EQ(ports.lines(kLogError), std::vector<std::string>());
        session.reset();
        end();
    }
}
INSTANTIATE_TEST_SUITE_P(Addresses, Version3TrapsOver, ::testing::Values(kLoopback, "::1"));

TEST_F(Version3TrapsTest, ReachAReceiverThatWasReplaced) {
    SnmpTrapDaemon daemon("public", kDaemonUsers);
    options.receivers = {settingsOf("* v3 inform user=phone")};
    const auto session = open(kLoopback, daemon.port());
    const auto sendOne = [&] { EXPECT_TRUE(send(*session, 3)) << error; };
    const std::function<void()> turns[] = {
        sendOne,
        [&] {
            daemon.replace([] {});
            sendOne();
        },
        [&] { daemon.replace(sendOne); },
    };
    std::size_t count = 0;
    for (const auto& turn : turns) {
        turn();
        ++count;
        ASSERT_EQ(daemon.lines(count).size(), count) << daemon.text();
    }
    EXPECT_EQ(ports.lines(kLogError), std::vector<std::string>());
}

TEST_F(Version3TrapsTest, WhoDoesNotSayWhoItIsDelaysNoOther) {
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

TEST_F(Version3TrapsTest, AReceiverOfVersion3IsAskedAFewTimes) {
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

TEST_F(Version3TrapsTest, AReceiverThatDoesNotKnowTheUserIsNamed) {
    const SnmpTrapDaemon daemon("public",
                                "createUser other SHA-256 signed-signed AES hidden-hidden\n"
                                "authUser log other priv");
    options.receivers = {settingsOf("* v3 inform user=phone")};
    const auto session = open(kLoopback, daemon.port());
    EXPECT_TRUE(send(*session, 0)) << error;
    EXPECT_TRUE(saidInTime("it does not know the user, or has other passphrases"));
}

TEST_F(Version3TrapsTest, ReadsNoSecretThatOthersCanRead) {
    letReadUsers(0644);
    options.receivers = {settingsOf("* v3 inform user=phone")};
    const TrapReceiver receiver;
    const auto session = open(kLoopback, receiver.port());
    EXPECT_TRUE(send(*session, 0)) << "it waits for its turn";
    EXPECT_TRUE(saidInTime("others than its owner may use it"));
    EXPECT_TRUE(receiver.isEmpty());
}

}  // namespace
}  // namespace vireo::test
