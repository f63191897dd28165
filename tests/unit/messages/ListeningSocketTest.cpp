#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "messages/ListeningSocket.h"
#include "support/Files.h"
#include "support/FramePeer.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {
namespace {

class ListeningSocketTest : public ::testing::Test {
protected:
    TemporaryDirectory m_directory;
    std::string m_path = m_directory.file("run/deep/vireo.sock");
    std::string m_error;
};

TEST_F(ListeningSocketTest, IsForItsOwnUserAloneAndRemovedAtTheEnd) {
    const mode_t before = ::umask(0);
    auto socket = ListeningSocket::open(m_path, m_error);
    ::umask(before);
    ASSERT_TRUE(socket) << m_error;
    EXPECT_EQ(modeOf(m_path), 0600U);
    EXPECT_EQ(modeOf(m_path + ".lock"), 0600U);
    EXPECT_EQ(modeOf(m_directory.file("run/deep")), 0700U);
    EXPECT_EQ(modeOf(m_directory.file("run")), 0700U);
    EXPECT_TRUE(FramePeer().connect(m_path));
    socket.reset();
    EXPECT_FALSE(std::filesystem::exists(m_path));
}

TEST_F(ListeningSocketTest, LeavesAloneWhatIsNotItsOwn) {
    std::filesystem::create_directories(m_directory.file("run/deep"));
    {
        const FileDescriptor foreign = listenAt(m_path);
        EXPECT_FALSE(ListeningSocket::open(m_path, m_error));
        EXPECT_NE(m_error.find("another program listens"), std::string::npos) << m_error;
        EXPECT_TRUE(FramePeer().connect(m_path));
    }
    const std::string file = m_directory.file("precious");
    std::ofstream(file) << "content";
    EXPECT_FALSE(ListeningSocket::open(file, m_error));
    EXPECT_NE(m_error.find("no socket"), std::string::npos) << m_error;
    EXPECT_EQ(std::filesystem::file_size(file), 7U);
    EXPECT_FALSE(ListeningSocket::open(file + "/below.sock", m_error));
    EXPECT_NE(m_error.find("cannot create the directory " + file), std::string::npos) << m_error;
    EXPECT_FALSE(ListeningSocket::open(m_directory.file(std::string(120, 'x')), m_error));
    EXPECT_NE(m_error.find("longer than 107 bytes"), std::string::npos) << m_error;
}

}  // namespace
}  // namespace vireo::test
