#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <sstream>

#include "passwords/PasswordHash.h"
#include "passwords/PasswordService.h"
#include "support/TemporaryDirectory.h"
#include "support/TestPorts.h"

namespace vireo::test {
namespace {

using std::chrono::seconds;

constexpr int kKind = PasswordMgmtSvcIfc::kFactoryReset;
constexpr const char* kName = PasswordDirectory::kFactoryReset;

TEST(PasswordHash, HasASaltOfItsOwnAndMatchesItsPasswordAlone) {
    std::string error;
    const std::string password = "correct horse \xc3\xa4";
    const std::string one = PasswordHash::make(password, error);
    const std::string other = PasswordHash::make(password, error);
    EXPECT_TRUE(one.starts_with("$y$")) << one << error;
    EXPECT_NE(one, other);
    EXPECT_TRUE(PasswordHash::matches(password, one));
    EXPECT_TRUE(PasswordHash::matches(password, other));
    for (const std::string& wrong : {std::string("correct horse"), std::string(), password + ' ',
                                     password + '\0', password + std::string("\0x", 2), one}) {
        EXPECT_FALSE(PasswordHash::matches(wrong, one)) << wrong;
    }
    for (const char* hash : {"", "*0", "$y$", "$y$j9T$", "plain", "$1$"}) {
        EXPECT_FALSE(PasswordHash::matches(hash, hash)) << "no hash is no password: " << hash;
    }
}

TEST(PasswordHash, RefusesWhatIsNoPassword) {
    for (const std::string& none : {std::string(), std::string(512, 'x'), std::string("a\0b", 3)}) {
        std::string error;
        EXPECT_EQ(PasswordHash::make(none, error), "");
        EXPECT_EQ(error, "a password has 1 to 511 bytes and no NUL");
    }
    std::string error;
    const std::string longest(511, 'x');
    EXPECT_TRUE(PasswordHash::matches(longest, PasswordHash::make(longest, error))) << error;
}

class PasswordServiceTest : public ::testing::Test {
protected:
    PasswordService service() {
        return PasswordService(directory(), [this] { return m_now; });
    }
    PasswordDirectory directory() const { return {m_root.path(), "passwords"}; }
    void set(const std::string& password) {
        std::string error;
        ASSERT_TRUE(directory().set(kName, password, error)) << error;
    }
    std::string file(const std::string& name) const { return m_root.file("passwords/" + name); }
    static std::string contentOf(const std::string& path) {
        std::stringstream content;
        content << std::ifstream(path).rdbuf();
        return content.str();
    }

    TestPorts m_ports;
    TemporaryDirectory m_root;
    PasswordService::Time m_now = std::chrono::steady_clock::now();
};

TEST_F(PasswordServiceTest, RefusesEveryPasswordWhileNoneIsSet) {
    PasswordService service = this->service();
    for (const char* password : {"", "factory-reset", "*", "x", "y", "z"}) {
        EXPECT_EQ(service.verifyPassword(kKind, password), PasswordService::eNotSet);
    }
    EXPECT_EQ(m_ports.count(kLogWarning, "no password is set for the factory reset"), 6);
    set("right");
    EXPECT_EQ(service.verifyPassword(kKind, "right"), 0) << "they did not count as wrong ones";
}

TEST_F(PasswordServiceTest, AcceptsTheRightPasswordOfItsKindAlone) {
    set("right");
    PasswordService service = this->service();
    EXPECT_EQ(service.verifyPassword(kKind, "right"), 0);
    EXPECT_NE(service.verifyPassword(kKind, "wrong"), 0);
    EXPECT_NE(service.verifyPassword(kKind, ""), 0);
    EXPECT_EQ(service.verifyPassword(kKind, "right"), 0);
    for (const int kind : {0, 1, 2, 4, -3}) {
        EXPECT_EQ(service.verifyPassword(kind, "right"), PasswordService::eUnknownKind) << kind;
    }
    set("new");
    EXPECT_NE(service.verifyPassword(kKind, "right"), 0);
    EXPECT_EQ(service.verifyPassword(kKind, "new"), 0) << "it is read anew each time";
}

TEST_F(PasswordServiceTest, KeepsAHashThatOnlyItsOwnerMayRead) {
    set("right");
    struct stat status {};
    ASSERT_EQ(::stat(file(kName).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    ASSERT_EQ(::stat(file("").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0700U);
    EXPECT_EQ(contentOf(file(kName)).find("right"), std::string::npos);

    PasswordService service = this->service();
    ASSERT_EQ(::chmod(file(kName).c_str(), 0640), 0);
    EXPECT_EQ(service.verifyPassword(kKind, "right"), PasswordService::eUnreadable);
    EXPECT_EQ(m_ports.count(kLogError, "others than its owner may use it"), 1);
    ASSERT_EQ(::chmod(file(kName).c_str(), 0600), 0);
    EXPECT_EQ(service.verifyPassword(kKind, "right"), 0);
}

TEST_F(PasswordServiceTest, WrongOnesAreFollowedByAWaitThatNobodyWaitsIn) {
    set("right");
    PasswordService service = this->service();
    EXPECT_EQ(service.verifyPassword(kKind, "a"), PasswordService::eWrong);
    EXPECT_EQ(service.verifyPassword(kKind, "b"), PasswordService::eWrong);
    EXPECT_EQ(service.verifyPassword(kKind, "c"), PasswordService::eWrong);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(service.verifyPassword(kKind, "right"), PasswordService::eTooSoon);
    }
    EXPECT_EQ(m_ports.count(kLogWarning, "not looked at for another 5 s, after 3 wrong ones"), 3);
    m_now += seconds(5) - std::chrono::nanoseconds(1);
    EXPECT_EQ(service.verifyPassword(kKind, "right"), PasswordService::eTooSoon);
    m_now += std::chrono::nanoseconds(1);
    EXPECT_EQ(service.verifyPassword(kKind, "d"), PasswordService::eWrong);
    m_now += seconds(9);
    EXPECT_EQ(service.verifyPassword(kKind, "right"), PasswordService::eTooSoon);
    m_now += seconds(1);
    EXPECT_EQ(service.verifyPassword(kKind, "right"), 0);
    EXPECT_EQ(service.verifyPassword(kKind, "e"), PasswordService::eWrong);
    EXPECT_EQ(service.verifyPassword(kKind, "right"), 0) << "the right one ended the count";
}

TEST_F(PasswordServiceTest, TheWaitDoublesUpToAQuarterOfAnHour) {
    const struct {
        unsigned failures;
        int wait;
    } rows[] = {
        {0, 0},  {1, 0},   {2, 0},   {3, 5},    {4, 10},   {5, 20},   {6, 40},
        {7, 80}, {8, 160}, {9, 320}, {10, 640}, {11, 900}, {12, 900}, {4'000'000'000U, 900}};
    for (const auto& row : rows) {
        EXPECT_EQ(PasswordService::waitAfter(row.failures), seconds(row.wait)) << row.failures;
    }
}

TEST_F(PasswordServiceTest, ARestartDoesNotForgetTheWrongOnesButANewPasswordDoes) {
    set("right");
    {
        PasswordService service = this->service();
        for (int i = 0; i < 4; ++i) {
            service.verifyPassword(kKind, "wrong");
            m_now += seconds(5);
        }
    }
    PasswordService service = this->service();
    EXPECT_EQ(service.verifyPassword(kKind, "right"), PasswordService::eTooSoon);
    EXPECT_EQ(m_ports.count(kLogWarning, "another 10 s, after 4 wrong ones"), 1);
    set("new");
    EXPECT_EQ(service.verifyPassword(kKind, "new"), 0);
    EXPECT_EQ(this->service().verifyPassword(kKind, "new"), 0);
}

TEST_F(PasswordServiceTest, NoPasswordIsInALogLine) {
    set("the-right-one");
    PasswordService service = this->service();
    for (int i = 0; i < 4; ++i) {
        service.verifyPassword(kKind, "the-wrong-one");
        service.verifyPassword(kKind, "the-right-one");
        service.verifyPassword(1, "the-wrong-one");
    }
    for (const int level : {kLogError, kLogWarning, kLogInfo, kLogDebug, kLogDump}) {
        EXPECT_EQ(m_ports.count(level, "-one"), 0);
    }
}

TEST_F(PasswordServiceTest, WhatCannotBeWrittenIsSaidAndStillCounts) {
    set("right");
    std::filesystem::create_directories(file("factory-reset.failures/full"));
    PasswordService service = this->service();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(service.verifyPassword(kKind, "wrong"), PasswordService::eWrong);
    }
    EXPECT_EQ(m_ports.count(kLogError, "factory-reset.failures"), 3);
    EXPECT_EQ(service.verifyPassword(kKind, "right"), PasswordService::eTooSoon);
}

}  // namespace
}  // namespace vireo::test
