#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "device/GPALAdmin.h"
#include "device/PlatformShell.h"
#include "files/PrivateFile.h"
#include "maintenance/DeviceReboot.h"
#include "maintenance/DeviceShell.h"
#include "support/TemporaryDirectory.h"
#include "support/TestPorts.h"

namespace vireo::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kCommand = "/bin/rm -rf /data/networking/*";

void write(const fs::path& path, const std::string& text = "x") {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

std::string contentOf(const fs::path& path) {
    std::stringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

/// Everything below a directory, relative to it.
std::set<std::string> treeOf(const fs::path& directory) {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        names.insert(entry.path().lexically_relative(directory));
    }
    return names;
}

class DeviceShellTest : public ::testing::Test {
protected:
    DeviceShellTest() {
        installPorts({.log = &m_ports, .shell = &m_shell});
        write(m_outside / "canary/file");
    }

    TestPorts m_ports;
    TemporaryDirectory m_directory;
    const fs::path m_root = m_directory.path() / "root";
    const fs::path m_outside = m_directory.path() / "outside";
    const fs::path m_networking = m_root / "data/networking";
    DeviceShell m_shell{m_root, false};
};

TEST_F(DeviceShellTest, TheCommandIsRecordedAndEmptiesTheDirectoryBelowTheRoot) {
    write(m_networking / "hosts");
    write(m_networking / "a/b/c/d");
    write(m_networking / "a/.hidden");
    write(m_networking / ".kept");
    write(m_networking / "-rf");
    write(m_networking / "with blank\n*");
    fs::create_directories(m_networking / "empty");
    write(m_root / "data/networking-2/stays");
    EXPECT_EQ(PlatformShell::run(kCommand), 0);
    EXPECT_EQ(treeOf(m_root / "data"),
              (std::set<std::string>{"networking", "networking/.kept", "networking-2",
                                     "networking-2/stays"}))
        << "what the shell's * leaves out stays";
    EXPECT_EQ(m_ports.count(kLogWarning, std::string("shell: ") + kCommand + " (below "), 1);
    EXPECT_EQ(PlatformShell::run(kCommand), 0) << "nothing left to do";
    fs::remove_all(m_networking);
    EXPECT_EQ(PlatformShell::run(kCommand), 0) << "no such directory";
}

TEST_F(DeviceShellTest, NoLinkInTheTreeLeadsOutside) {
    write(m_networking / "deep/file");
    fs::create_directory_symlink(m_outside, m_networking / "out");
    fs::create_directory_symlink(m_outside / "canary", m_networking / "deep/out");
    fs::create_symlink(m_outside / "canary/file", m_networking / "deep/link");
    EXPECT_EQ(PlatformShell::run(kCommand), 0);
    EXPECT_TRUE(treeOf(m_networking).empty());
    EXPECT_EQ(contentOf(m_outside / "canary/file"), "x");

    for (const char* planted : {"data/networking", "data"}) {
        fs::remove_all(m_root / "data");
        write(m_outside / "networking/file");
        fs::create_directories((m_root / planted).parent_path());
        fs::create_directory_symlink(m_outside, m_root / planted);
        EXPECT_EQ(PlatformShell::run(kCommand), 1) << planted;
        EXPECT_TRUE(fs::exists(m_outside / "canary/file")) << planted;
        EXPECT_TRUE(fs::exists(m_outside / "networking/file")) << planted;
        fs::remove(m_root / planted);
    }
    EXPECT_EQ(m_ports.count(kLogError, "there is something else than a directory of that name"), 2);
}

TEST_F(DeviceShellTest, ADeepTreeIsRemovedAsWell) {
    fs::create_directories(m_networking);
    const fs::path before = fs::current_path();
    fs::current_path(m_networking);
    for (int depth = 0; depth < 1500; ++depth) {  // longer than any path can be
        const std::string name(10, 'd');
        ASSERT_TRUE(fs::create_directory(name));
        fs::current_path(name);
    }
    fs::current_path(before);
    EXPECT_EQ(PlatformShell::run(kCommand), 0);
    EXPECT_TRUE(treeOf(m_networking).empty());
}

TEST_F(DeviceShellTest, OtherCommandsAreRefused) {
    write(m_root / "data/file");
    for (const char* command :
         {"", "/bin/rm -rf /data", "/bin/rm -rf /data/../../*", "/bin/rm -rf data/*",
          "/bin/rm -rf /data/networking/* /data/*", "/bin/rm -rf /data/$(id)/*", "rm -rf /data/*",
          "/bin/rm -rf /*", "touch /data/x; /bin/rm -rf /data/*"}) {
        EXPECT_EQ(PlatformShell::run(command), -1) << command;
        EXPECT_EQ(m_ports.count(kLogWarning, std::string("shell: ") + command + " (below "), 1);
    }
    EXPECT_EQ(treeOf(m_root / "data"), std::set<std::string>{"file"});
    EXPECT_EQ(m_ports.count(kLogError, "no command of this phone"), 8);
    installPorts({.log = &m_ports});
    EXPECT_EQ(PlatformShell::run(kCommand), -1) << "there is no shell";
}

TEST_F(DeviceShellTest, ThePhonesOwnShellRunsWhatItIsGiven) {
    DeviceShell machine("/", true);
    const std::string made = m_directory.file("made");
    std::string error;
    EXPECT_EQ(machine.run("echo \"$((1 + 1))\" > '" + made + "'; exit 7", error), 7);
    EXPECT_EQ(contentOf(made), "2\n");
    EXPECT_EQ(machine.run("kill -9 $$", error), -1);
    EXPECT_EQ(error, "cannot run \"kill -9 $$\": it was ended by a signal");
}

struct RebootTest : ::testing::Test {
    std::vector<std::function<void()>> tasks;
    int ends = 0;
    TestPorts ports;
    TemporaryDirectory root;
    const fs::path marker = root.path() / DeviceReboot::kMarker;
    DeviceReboot::Hooks hooks{[this](auto task) { tasks.push_back(std::move(task)); },
                              [this] { ++ends; }};
};

TEST_F(RebootTest, ComesAfterWhatIsBeingDoneLeavesAMarkerAndEndsTheProcessOnce) {
    {
        DeviceReboot reboot(root.path(), false, hooks);
        installPorts({.log = &ports, .reboot = &reboot});
        EXPECT_TRUE(GPALAdmin::rebootDevice());
        EXPECT_TRUE(GPALAdmin::rebootDevice());
        ASSERT_EQ(tasks.size(), 1U);
        EXPECT_FALSE(reboot.isUnderWay());
        EXPECT_FALSE(fs::exists(marker));
        tasks[0]();
        EXPECT_TRUE(reboot.isUnderWay());
        EXPECT_EQ(ends, 1);
        EXPECT_EQ(contentOf(marker).size(), std::string("2026-11-23T12:00:00Z\n").size());
        installPorts({.log = &ports});
    }
    const DeviceReboot next(root.path(), false, hooks);
    EXPECT_FALSE(fs::exists(marker));
    EXPECT_EQ(ports.count(kLogInfo, "this start follows the reboot of 2"), 1);
    EXPECT_FALSE(GPALAdmin::rebootDevice()) << "there is no port";
}

TEST_F(RebootTest, AMarkerThatCannotBeWrittenDoesNotKeepItFromComing) {
    fs::create_directories(marker / "full");
    DeviceReboot reboot(root.path(), false, hooks);
    std::string error;
    EXPECT_TRUE(reboot.reboot(error));
    tasks.at(0)();
    EXPECT_EQ(ends, 1);
    EXPECT_GE(ports.count(kLogError, DeviceReboot::kMarker), 1);
}

TEST(PrivateFile, HoldsTheOldTextOrTheNewOneWhateverWasLeftBehind) {
    const TemporaryDirectory directory;
    const PrivateFile file(ConfinedRoot(directory.path()), "a/b", "name");
    std::string text = "before";
    std::string error;
    EXPECT_TRUE(file.read(text, error)) << error;
    EXPECT_EQ(text, "");
    EXPECT_TRUE(file.remove(error)) << error;
    write(directory.path() / "target");
    fs::create_directories(directory.path() / "a/b");
    fs::create_symlink(directory.path() / "target", directory.path() / "a/b/.name.new");
    for (const char* content : {"one", "two, longer", ""}) {
        EXPECT_TRUE(file.replace(content, error)) << error;
        EXPECT_TRUE(file.read(text, error)) << error;
        EXPECT_EQ(text, content);
    }
    EXPECT_EQ(contentOf(directory.path() / "target"), "x") << "it was not written through";
    struct stat status {};
    ASSERT_EQ(::stat(file.path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_TRUE(file.remove(error)) << error;
    EXPECT_EQ(treeOf(directory.path() / "a/b"), std::set<std::string>());
}

TEST(PrivateFile, WhatRootWritesBelongsToTheOwnerOfTheDirectory) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root writes for others";
    }
    constexpr uid_t kSomebody = 65534;
    const TemporaryDirectory directory;
    ASSERT_EQ(::chown(directory.path().c_str(), kSomebody, kSomebody), 0);
    const PrivateFile file(ConfinedRoot(directory.path()), "made", "name");
    std::string error;
    ASSERT_TRUE(file.replace("text", error)) << error;
    for (const std::string& path : {file.path(), directory.file("made")}) {
        struct stat status {};
        ASSERT_EQ(::stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, kSomebody) << path;
        EXPECT_EQ(status.st_mode & 077U, 0U) << path;
    }
}

}  // namespace
}  // namespace vireo::test
