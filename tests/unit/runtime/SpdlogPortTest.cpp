#include <gtest/gtest.h>
#include <poll.h>
#include <sys/inotify.h>

#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "log/Log.h"
#include "log/SpdlogPort.h"
#include "messages/FileDescriptor.h"
#include "support/Files.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {
namespace {

class SpdlogPortTest : public ::testing::Test {
protected:
    std::unique_ptr<SpdlogPort> open(const LogOptions& options = {}) const {
        std::string error;
        auto port = SpdlogPort::toFile(m_file, error, options);
        EXPECT_TRUE(port) << error;
        return port;
    }

    std::vector<std::string> lines() const { return linesOf(readFile(m_file)); }

    TemporaryDirectory m_directory;
    const std::string m_file = m_directory.file("log/vireod.log");
};

TEST_F(SpdlogPortTest, EveryLineHasTheOneFormWhateverItsText) {
    auto port = open();
    ASSERT_TRUE(port);
    const struct {
        int level;
        const char* word;
        std::string text;
        std::string written;
    } rows[] = {
        {kLogError, "error", "plain", "plain"},
        {kLogWarning, "warning", "100% {} {0} %s", "100% {} {0} %s"},
        {kLogInfo, "info", "a\nb\n", "a\\nb\\n"},
        {kLogDebug, "debug", "\r\t\x01\x1b[0m\x7f", "\\r\\t\\x01\\x1b[0m\\x7f"},
        {kLogDump, "dump", "\xc3\xa4\\n", "\xc3\xa4\\n"},
        {kLogInfo, "info", std::string("nul\0nul", 7), "nul\\x00nul"},
        {kLogInfo, "info", "", ""},
        {kLogInfo, "info", std::string(70000, 'l'), std::string(70000, 'l')},
    };
    for (const auto& row : rows) {
        port->write("Vireo Client Management", "./src/items/ItemReader", row.level, 42, row.text);
    }
    port.reset();
    const std::vector<std::string> written = lines();
    ASSERT_EQ(written.size(), std::size(rows));
    for (std::size_t i = 0; i < written.size(); ++i) {
        SCOPED_TRACE(i);
        std::tm time{};
        const char* milliseconds = ::strptime(written[i].c_str(), "%Y-%m-%d %H:%M:%S", &time);
        ASSERT_NE(milliseconds, nullptr) << written[i];
        const std::size_t timeLength = std::string("2026-11-22 10:00:00.123 ").size();
        ASSERT_EQ(milliseconds - written[i].c_str(), 19);
        EXPECT_EQ(written[i][19], '.');
        EXPECT_EQ(written[i].find_first_not_of("0123456789", 20), timeLength - 1);
        EXPECT_EQ(written[i].substr(timeLength), std::string(rows[i].word) +
                                                     " [Vireo Client Management] "
                                                     "./src/items/ItemReader:42 " +
                                                     rows[i].written);
    }
}

TEST_F(SpdlogPortTest, ErrorsAreInTheFileAtOnceAndOtherLinesSoon) {
    const auto port = open();
    ASSERT_TRUE(port);
    port->write("test", "./file", kLogError, 1, "broken");
    ASSERT_EQ(lines().size(), 1U);
    const FileDescriptor watch(::inotify_init1(IN_CLOEXEC));
    ASSERT_GE(::inotify_add_watch(watch.get(), m_file.c_str(), IN_MODIFY), 0);
    port->write("test", "./file", kLogInfo, 1, "news");
    pollfd entry{watch.get(), POLLIN, 0};
    ASSERT_EQ(::poll(&entry, 1, 30000), 1);
    EXPECT_EQ(lines().size(), 2U);
}

TEST_F(SpdlogPortTest, AppendsWholeLinesFromManyThreads) {
    writeFile(m_file, "from before\n");
    auto port = open();
    ASSERT_TRUE(port);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&port] {
            for (int i = 0; i < 500; ++i) {
                port->write("test", "./file", kLogInfo, i, std::string(300, 'x'));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    port.reset();
    const std::vector<std::string> written = lines();
    ASSERT_EQ(written.size(), 2001U);
    EXPECT_EQ(written[0], "from before");
    for (std::size_t i = 1; i < written.size(); ++i) {
        ASSERT_TRUE(written[i].ends_with(' ' + std::string(300, 'x'))) << written[i];
    }
}

TEST_F(SpdlogPortTest, ALogThatGrowsIsRenamedAndTheOldestGoes) {
    auto port = open({.maximumFileBytes = 4096, .keptFiles = 2});
    ASSERT_TRUE(port);
    for (int i = 0; i < 100; ++i) {
        port->write("C", "f", kLogInfo, i, std::string(1000, 'x'));
    }
    port.reset();
    std::uintmax_t total = 0;
    int files = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(m_file).parent_path())) {
        EXPECT_EQ(entry.status().permissions() & std::filesystem::perms(077),
                  std::filesystem::perms::none)
            << entry.path() << " is for its owner alone";
        total += entry.file_size();
        ++files;
    }
    EXPECT_EQ(files, 3);
    EXPECT_LE(total, 3 * 4096U);
    EXPECT_EQ(lines().back().substr(24), "info [C] f:99 " + std::string(1000, 'x'));
}

}  // namespace
}  // namespace vireo::test
