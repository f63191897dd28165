#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>

#include "unit/transfer/TransferFixture.h"

namespace vireo::test {
namespace {

using std::chrono::hours;
using testing::HasSubstr;

/// A server that stops in the middle of a file until it is told to go on.
class HeldTransfer : public Ftp {
protected:
    static constexpr long kHold = 3'000'000;

    void SetUp() override {
        Ftp::SetUp();
        if (IsSkipped()) {
            return;
        }
        ASSERT_EQ(0, ::mkfifo(gate.c_str(), 0600));
        serve("home/f", randomBytes(kLarge, 1));
        setAge("home/f", hours(2));
        held = std::make_unique<FtpServer>(served.path().string(), "", kHold, gate);
        request = ftp(held->port(), "", "f");
    }
    Reports& startAndWait() {
        Reports& reports = start(request);
        EXPECT_TRUE(reports.reaches(60));
        return reports;
    }
    /// Another server in its place; the one before may wait for somebody who has left.
    void renewServer() {
        held.reset();
        held = std::make_unique<FtpServer>(served.path().string(), request.port, kHold, gate);
    }
    void goOn() { FileDescriptor(::open(gate.c_str(), O_WRONLY | O_CLOEXEC)); }
    /// The server dies in the middle of the transfer, and comes back without holding files.
    void interrupt() {
        Reports& reports = startAndWait();
        held.reset();
        EXPECT_GT(0, reports.end());
        EXPECT_EQ(1, ports.count(kLogError, "lost after 3000000 of 5000000 bytes"));
        EXPECT_EQ(1U, partialFiles());
        EXPECT_FALSE(std::filesystem::exists(local("got")));
        held = std::make_unique<FtpServer>(served.path().string(), request.port);
    }

    std::string gate = served.file("gate");
    std::unique_ptr<FtpServer> held;
    TransferRequest request;
};

// That nothing is under its name before it is complete is seen in the downloads of the phone.
TEST_F(HeldTransfer, RefusesAnotherUntilItHasEnded) {
    Reports& reports = startAndWait();
    EXPECT_TRUE(transfer().isActive());
    EXPECT_THAT(refusal(request), HasSubstr("another transfer is under way"));
    goOn();
    EXPECT_EQ(100, reports.end());
    EXPECT_FALSE(transfer().isActive());
}

TEST_F(HeldTransfer, LeavesALinkInItsPlaceWhenItFails) {
    std::filesystem::create_symlink("default", local("got"));
    interrupt();
    request.fileName = "missing";
    EXPECT_GT(0, fetch(request));
    EXPECT_EQ("default", std::filesystem::read_symlink(local("got")));
    EXPECT_EQ(0U, partialFiles()) << "the rest of another source";
}

TEST_F(HeldTransfer, IsGivenUpWhenTheServerStalls) {
    options.stallTimeout = std::chrono::milliseconds(200);
    EXPECT_GT(0, startAndWait().end());
    EXPECT_EQ(1, ports.count(kLogError, "nothing for 0.2 s after 3000000 of 5000000 bytes"));
}

TEST_F(HeldTransfer, EndsWithTheService) {
    Reports& reports = startAndWait();
    endTransfers();
    EXPECT_GT(0, reports.end());
    EXPECT_TRUE(std::filesystem::is_empty(phone.path()));
}

TEST_F(HeldTransfer, ComesToNothingWhereItsDirectoryIsCleared) {
    for (const bool hasBegun : {true, false}) {
        Reports& reports = hasBegun ? startAndWait() : start(request);
        transfer().discard(local("other/"));
        EXPECT_TRUE(transfer().isActive());
        transfer().discard(local(""));
        EXPECT_GT(0, reports.end());
        EXPECT_TRUE(std::filesystem::is_empty(phone.path()));
        renewServer();
    }
    EXPECT_EQ(2, ports.count(kLogError, ": its directory was cleared meanwhile"));

    interrupt();
    transfer().discard(local("other/"));
    EXPECT_EQ(1U, partialFiles());
    transfer().discard(local(""));
    EXPECT_TRUE(std::filesystem::is_empty(phone.path())) << "nor is the rest kept";
    EXPECT_EQ(100, fetch(request)) << "what is fetched afterwards comes";
}

TEST_F(HeldTransfer, EndsWhenTheDiskTakesNoMore) {
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{1'000'000, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_GT(0, fetch(request));
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(1, ports.count(kLogError,
                             "cannot write to " + phone.path().string() + "/: File too large"));
    EXPECT_TRUE(std::filesystem::is_empty(phone.path()));
}

// In these, the first half of the file on the server is another one afterwards. Only who fetches
// the rest alone still has the old one.
TEST_F(HeldTransfer, GoesOnWhereItWasInterrupted) {
    interrupt();
    const std::string old = contentOf(served.file("home/f"));
    serve("home/f", std::string(kHold, 'x') + old.substr(kHold));
    setAge("home/f", hours(2));
    EXPECT_EQ(100, fetch(request));
    EXPECT_TRUE(old == contentOf(local("got")));
}

TEST_F(HeldTransfer, StartsAfreshWhenTheSourceOrTheRestIsAnother) {
    const std::string fresh = randomBytes(kLarge, 2);
    const struct {
        const char* what;
        std::function<void()> change;
    } rows[] = {{"time", [&] { serve("home/f", fresh), setAge("home/f", hours(1)); }},
                {"longer", [&] { serve("home/f", fresh + "x"), setAge("home/f", hours(2)); }},
                {"shorter", [&] { serve("home/f", "short"), setAge("home/f", hours(2)); }},
                {"rest removed", [&] {
                     serve("home/f", fresh), setAge("home/f", hours(2));
                     for (const auto& entry : std::filesystem::directory_iterator(phone.path())) {
                         std::filesystem::remove(entry.path());
                     }
                 }}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        renewServer();
        serve("home/f", randomBytes(kLarge, 1));
        setAge("home/f", hours(2));
        ports.forgetLines();
        interrupt();
        row.change();
        expectFetched(request, "home/f");
        std::filesystem::remove(local("got"));
    }
}

TEST_F(Https, GoesOnOrStartsAfresh) {
    for (const bool isChanged : {false, true}) {
        const std::string old = randomBytes(kLarge, 1);
        serve("held/f", old);
        setAge("held/f", hours(2));
        HttpsServer server(served.path().string());
        trust(server);
        const TransferRequest request = https(server.port(HttpsServer::eGood), "held", "f");
        Reports& first = start(request);
        ASSERT_TRUE(first.reaches(50));
        server.kill();
        EXPECT_GT(0, first.end());
        EXPECT_EQ(1U, partialFiles());
        const std::string fresh = std::string(kLarge / 2, 'x') + old.substr(kLarge / 2);
        serve("held/f", fresh);
        setAge("held/f", hours(isChanged ? 1 : 2));
        server.restart();
        EXPECT_EQ(100, fetch(request));
        EXPECT_TRUE((isChanged ? fresh : old) == contentOf(local("got"))) << isChanged;
    }
}

TEST_F(TransferTest, WhatACrashLeftIsRemovedAtTheNextStart) {
    const std::string rest = std::string(kPartialPrefix) + "1-1";
    TemporaryDirectory outside;
    std::ofstream(outside.file(rest)) << "not below the root";
    std::filesystem::create_directories(phone.path() / "a/b");
    std::filesystem::create_directory_symlink(outside.path(), phone.path() / "a/link");
    std::ofstream(phone.path() / "a/b" / rest) << "half";
    std::filesystem::create_symlink("whole", phone.path() / "a" / rest);
    std::ofstream(phone.path() / "a/b/whole") << "whole";
    std::ofstream(phone.path() / "a/b/.hidden") << "kept";
    transfer();
    EXPECT_EQ(0U, partialFiles());
    EXPECT_EQ("whole", contentOf(local("a/b/whole")));
    EXPECT_EQ("kept", contentOf(local("a/b/.hidden")));
    EXPECT_FALSE(std::filesystem::is_symlink(local("a/" + rest)));
    EXPECT_TRUE(std::filesystem::exists(outside.file(rest)));
    EXPECT_EQ(1, ports.count(kLogWarning, local("a/b/" + rest) + ", the rest of interrupted"));
}

}  // namespace
}  // namespace vireo::test
