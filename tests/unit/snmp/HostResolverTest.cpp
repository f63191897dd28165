#include <gtest/gtest.h>
#include <net/if.h>
#include <netdb.h>
#include <sys/ioctl.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

#include "snmp/HostResolver.h"
#include "support/OwnMounts.h"
#include "support/TemporaryDirectory.h"
#include "support/TrapReceiver.h"

namespace vireo::test {
namespace {

constexpr const char* kPending = "the name is still being looked up";

TEST(HostResolver, FindsAddressesAndWhatThisMachineKnows) {
    const struct {
        const char* host;
        const char* address;
        const char* other = "";  // is right as well
    } rows[] = {
        {"192.0.2.7", "192.0.2.7:99"},
        {"2001:db8::7", "[2001:db8::7]:99"},
        {"localhost", "127.0.0.1:99", "[::1]:99"},
    };
    HostResolver resolver(std::chrono::seconds(20), std::chrono::seconds(300));
    for (const auto& row : rows) {
        std::string error;
        const auto found = resolver.find(row.host, 99, error);
        ASSERT_TRUE(found) << row.host << ": " << error;
        EXPECT_TRUE(found->text() == row.address || found->text() == row.other) << found->text();
    }
}

std::ptrdiff_t threads() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                         std::filesystem::directory_iterator());
}

/// A network of its own, without a server of names.
bool separate(const std::string& settings) {
    if (::unshare(CLONE_NEWNET) != 0) {
        return false;
    }
    const FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ifreq loopback{};
    std::strcpy(loopback.ifr_name, "lo");
    loopback.ifr_flags = IFF_UP;
    return ::ioctl(socket.get(), SIOCSIFFLAGS, &loopback) == 0 &&
           ::mount(settings.c_str(), "/etc/resolv.conf", nullptr, MS_BIND, nullptr) == 0;
}

bool saysWhyANameIsNotFound() {
    HostResolver resolver(std::chrono::seconds(20), std::chrono::seconds(300));
    for (int i = 0; i < 2; ++i) {
        std::string error;
        EXPECT_FALSE(resolver.find("absent.test", 1, error));
        EXPECT_EQ(error, ::gai_strerror(EAI_AGAIN));
    }
    return !::testing::Test::HasFailure();
}

bool looksUpFewNamesAtATime() {
    constexpr unsigned short kDomain = 53;
    constexpr int kMost = 4;
    const TrapReceiver silent(kDomain);
    HostResolver resolver(std::chrono::milliseconds(1), std::chrono::seconds(300));
    std::string error;
    const auto before = threads();
    for (int i = 0; i < 2 * kMost; ++i) {  // each is asked for twice
        EXPECT_FALSE(resolver.find("stuck-" + std::to_string(i % kMost) + ".test", 1, error));
        EXPECT_EQ(error, kPending);
    }
    EXPECT_FALSE(resolver.find("further.test", 1, error));
    EXPECT_EQ(error, "the name cannot be looked up while 4 others have no answer");
    EXPECT_EQ(threads(), before + kMost);
    EXPECT_TRUE(resolver.find("192.0.2.7", 1, error)) << "nobody is asked";
    EXPECT_TRUE(silent.takeBytes(std::chrono::seconds(5)));
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (error != kPending && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        EXPECT_FALSE(resolver.find("further.test", 1, error));
    }
    EXPECT_EQ(error, kPending) << "as soon as the others are given up";
    return !::testing::Test::HasFailure();
}

TEST(HostResolver, WithoutAServerOfNamesItSaysSoAndTakesFewThreads) {
    const TemporaryDirectory directory;
    const std::string settings = directory.file("resolv.conf");
    std::ofstream(settings) << "nameserver 127.0.0.1\noptions timeout:1 attempts:1\n";
    if (!OwnMounts::run([&] { return separate(settings); })) {
        GTEST_SKIP() << "this machine allows no network of one's own";
    }
    EXPECT_TRUE(OwnMounts::run([&] { return separate(settings) && saysWhyANameIsNotFound(); }));
    EXPECT_TRUE(OwnMounts::run([&] { return separate(settings) && looksUpFewNamesAtATime(); }));
}

}  // namespace
}  // namespace vireo::test
