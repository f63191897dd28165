#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <random>
#include <thread>

#include "support/Effort.h"
#include "support/ItemCalls.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

// A plain item, one of another table, and one in an indexed table: three tables, one record.
constexpr const char* kTags[] = {"ringer-melody", "sip-server", "key-label-1"};

ManageableData numberedRecord(long number) {
    ManageableData record;
    for (const char* tag : kTags) {
        record.populate(tag, std::to_string(number));
    }
    return record;
}

/// How far the writing of one round came.
struct Progress {
    long acknowledged;  ///< the last one that is known to be kept
    long sent;          ///< the last one that may be
};

/// Writes ascending numbers after those of `progress` until the service is gone.
Progress writeUntilGone(LocalMgmtClient& client, Progress progress) {
    while (true) {
        ManageableData record = numberedRecord(++progress.sent);
        bool result = false;
        if (client.setData(record, result) != CallStatus::eDone) {
            return progress;
        }
        EXPECT_TRUE(result) << record.serialize();
        progress.acknowledged = progress.sent;
    }
}

/// The number that all items of the record have in common.
long readNumber(LocalMgmtClient& client) {
    const ItemAnswer answer = readItems(client, {std::begin(kTags), std::end(kTags)});
    EXPECT_TRUE(answer.result);
    const std::string first = answer.value(kTags[0]);
    for (const char* tag : kTags) {
        EXPECT_EQ(answer.value(tag), first) << "a record is written whole or not at all";
    }
    return std::atol(first.c_str());
}

TEST(Crash, NothingAcknowledgedIsLostWheneverTheServiceIsKilled) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    RunningPhone phone;
    ManageableData initial = numberedRecord(0);
    bool result = false;
    const auto began = std::chrono::steady_clock::now();
    ASSERT_EQ(phone.connect()->setData(initial, result), CallStatus::eDone);
    // Some rounds have to last for more than one write, however slow the first is here.
    const std::chrono::microseconds twoWrites = std::chrono::ceil<std::chrono::microseconds>(
        2 * (std::chrono::steady_clock::now() - began));
    std::uniform_int_distribution<std::chrono::microseconds::rep> microseconds(
        0, std::max<std::chrono::microseconds::rep>(12000, twoWrites.count()));
    Progress progress{0, 0};
    long writes = 0;
    const long rounds = effort("VIREO_CRASH_ROUNDS", 300);
    for (long round = 0; round < rounds && !::testing::Test::HasFailure(); ++round) {
        auto client = phone.connect();
        ASSERT_TRUE(client);
        const std::chrono::microseconds delay(microseconds(random));
        std::thread killer([&phone, delay] {
            std::this_thread::sleep_for(delay);
            phone.process->kill(SIGKILL);
        });
        const long before = progress.sent;
        progress = writeUntilGone(*client, progress);
        writes += progress.sent - before - 1;
        killer.join();
        phone.crash();
        phone.start();
        const auto reader = phone.connect();
        ASSERT_TRUE(reader);
        const long kept = readNumber(*reader);
        EXPECT_GE(kept, progress.acknowledged) << "round " << round;
        EXPECT_LE(kept, progress.sent) << "round " << round;
        progress.acknowledged = kept;
    }
    EXPECT_GT(writes, 0);
    std::printf("%ld rounds, %ld acknowledged writes\n", rounds, writes);
}

TEST(Crash, TheStoreIsSyncedBeforeTheReplyIsSent) {
    if (ChildProcess::run({"strace", "-qq", "-o", "/dev/null", "true"}).exitCode != 0) {
        GTEST_SKIP() << "strace cannot trace here";
    }
    TemporaryDirectory directory;
    const std::string trace = directory.file("trace");
    RunningPhone phone({"strace", "-f", "-qq", "-s", "200", "-e",
                        "trace=fsync,fdatasync,sendmsg,sendto,writev", "-o", trace});
    const auto client = phone.connect();
    ASSERT_TRUE(client);
    ManageableData record = numberedRecord(1);
    bool result = false;
    ASSERT_EQ(client->setData(record, result), CallStatus::eDone);
    // The tracer goes with its last process: stop the service, not the tracer.
    ASSERT_EQ(
        ChildProcess::run({"pkill", "-TERM", "-P", std::to_string(phone.process->pid())}).exitCode,
        0);
    phone.process->finish();
    std::ifstream lines(trace);
    bool isSynced = false;
    bool isReplied = false;
    for (std::string line; std::getline(lines, line) && !isReplied;) {
        if (line.find("sync(") != std::string::npos) {
            isSynced = true;
        } else if (line.find("setData") != std::string::npos) {
            isReplied = true;
        } else if (line.find("send") != std::string::npos ||
                   line.find("writev") != std::string::npos) {
            isSynced = false;  // an earlier reply: the welcome
        }
    }
    EXPECT_TRUE(isReplied);
    EXPECT_TRUE(isSynced);
}

}  // namespace
}  // namespace vireo::test
