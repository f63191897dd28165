#include <gtest/gtest.h>
#include <poll.h>
#include <sys/inotify.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "ScratchDirectory.h"
#include "log/Log.h"
#include "log/SpdlogPort.h"
#include "messages/FileDescriptor.h"

namespace vireo::test {
namespace {

std::vector<std::string> linesOf(const std::string& file) {
    std::ifstream in(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

TEST(SpdlogPort, EveryLineHasTheOneFormWhateverItsText) {
    const ScratchDirectory directory;
    const std::string file = directory / "log/vireod.log";
    std::string error;
    auto port = SpdlogPort::toFile(file, error);
    ASSERT_TRUE(port) << error;
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
    const std::vector<std::string> lines = linesOf(file);
    ASSERT_EQ(lines.size(), std::size(rows));
    for (std::size_t i = 0; i < lines.size(); ++i) {
        SCOPED_TRACE(i);
        std::tm time{};
        const char* milliseconds = ::strptime(lines[i].c_str(), "%Y-%m-%d %H:%M:%S", &time);
        ASSERT_NE(milliseconds, nullptr) << lines[i];
        const std::size_t timeLength = std::string("2026-11-22 10:00:00.123 ").size();
        ASSERT_EQ(milliseconds - lines[i].c_str(), 19);
        EXPECT_EQ(lines[i][19], '.');
        EXPECT_EQ(lines[i].find_first_not_of("0123456789", 20), timeLength - 1);
        EXPECT_EQ(lines[i].substr(timeLength), std::string(rows[i].word) +
                                                   " [Vireo Client Management] "
                                                   "./src/items/ItemReader:42 " +
                                                   rows[i].written);
    }
}

TEST(SpdlogPort, ErrorsAreInTheFileAtOnceAndOtherLinesSoon) {
    const ScratchDirectory directory;
    const std::string file = directory / "vireod.log";
    std::string error;
    const auto port = SpdlogPort::toFile(file, error);
    ASSERT_TRUE(port) << error;
    port->write("test", "./file", kLogError, 1, "broken");
    ASSERT_EQ(linesOf(file).size(), 1U);
    const FileDescriptor watch(::inotify_init1(IN_CLOEXEC));
    ASSERT_GE(::inotify_add_watch(watch.get(), file.c_str(), IN_MODIFY), 0);
    port->write("test", "./file", kLogInfo, 1, "news");
    pollfd entry{watch.get(), POLLIN, 0};
    ASSERT_EQ(::poll(&entry, 1, 30000), 1);
    EXPECT_EQ(linesOf(file).size(), 2U);
}

TEST(SpdlogPort, AppendsWholeLinesFromManyThreads) {
    const ScratchDirectory directory;
    const std::string file = directory / "vireod.log";
    std::ofstream(file) << "from before\n";
    std::string error;
    auto port = SpdlogPort::toFile(file, error);
    ASSERT_TRUE(port) << error;
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
    const std::vector<std::string> lines = linesOf(file);
    ASSERT_EQ(lines.size(), 2001U);
    EXPECT_EQ(lines[0], "from before");
    for (std::size_t i = 1; i < lines.size(); ++i) {
        ASSERT_TRUE(lines[i].ends_with(' ' + std::string(300, 'x'))) << lines[i];
    }
}

TEST(SpdlogPort, AFileThatCannotBeWrittenIsNamed) {
    const ScratchDirectory directory;
    std::string error;
    EXPECT_FALSE(SpdlogPort::toFile(directory.path().string(), error));
    EXPECT_NE(error.find('"' + directory.path().string() + '"'), std::string::npos) << error;
}

TEST(SpdlogPort, ALogThatGrowsIsRenamedAndTheOldestGoes) {
    const ScratchDirectory directory;
    const std::string file = directory / "vireod.log";
    std::string error;
    auto port = SpdlogPort::toFile(file, error, {.maximumFileBytes = 4096, .keptFiles = 2});
    ASSERT_TRUE(port) << error;
    for (int i = 0; i < 100; ++i) {
        port->write("C", "f", kLogInfo, i, std::string(1000, 'x'));
    }
    port.reset();
    std::uintmax_t total = 0;
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
        EXPECT_EQ(entry.status().permissions() & std::filesystem::perms(077),
                  std::filesystem::perms::none)
            << entry.path() << " is for its owner alone";
        total += entry.file_size();
        ++files;
    }
    EXPECT_EQ(files, 3);
    EXPECT_LE(total, 3 * 4096U);
    EXPECT_EQ(linesOf(file).back().substr(24), "info [C] f:99 " + std::string(1000, 'x'));
}

}  // namespace
}  // namespace vireo::test
