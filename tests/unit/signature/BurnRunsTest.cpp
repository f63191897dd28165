#include <gmock/gmock.h>

#include <fstream>
#include <thread>

#include "support/OwnMounts.h"
#include "unit/signature/SignedImagesFixture.h"

namespace vireo::test {
namespace {

using ::testing::HasSubstr;

class BurnRunsTest : public SignedImagesFixture {
protected:
    /// Starts a burn that stands still until its reports may go on.
    Reports& holdBurn(const std::string& path) {
        Reports& reports = newReports();
        reports.hold();
        std::string error;
        EXPECT_TRUE(m_images->burn(path, reports, error)) << error;
        reports.awaitFirst();
        return reports;
    }
    /// Why a burn is not even started.
    std::string refusalOf(const std::string& path) {
        std::string error;
        EXPECT_FALSE(m_images->burn(path, m_ofRefused, error));
        return error;
    }

    Reports& m_ofRefused = newReports();
};

TEST_F(BurnRunsTest, OneBurnAtATimeAndNoneDuringATrial) {
    runFrom(signedImage("old", "1.0"));
    const std::string content = signedImage(noise(3'000'000));
    const std::string path = write(content);
    Reports& reports = holdBurn(path);
    EXPECT_TRUE(m_images->isActive());
    EXPECT_THAT(refusalOf(path), HasSubstr("another burn is under way"));
    reports.goOn();
    EXPECT_EQ(reports.all().back(), SignedImages::kDone);
    EXPECT_EQ(bank('b'), content);
    // What waits for its trial can be replaced, what is on trial cannot.
    EXPECT_EQ(burn(signedImage("newer", "3.0")).back(), SignedImages::kDone);
    open();
    EXPECT_THAT(refusalOf(write(signedImage("newest", "4.0"))),
                HasSubstr("the software that runs is on trial"));
    EXPECT_TRUE(m_banks->confirm());
    EXPECT_EQ(burn(signedImage("newest", "4.0")).back(), SignedImages::kDone);
}

TEST_F(BurnRunsTest, TheEndOfThePhoneEndsABurnWithAFailure) {
    runFrom(signedImage("old", "1.0"));
    const auto before = names();
    const std::string path = write(signedImage(noise(3'000'000)));
    Reports& reports = holdBurn(path);
    std::thread end([this] { m_images->stop(); });
    // It is being stopped when another burn is refused for that.
    while (refusalOf(path).find("is being stopped") == std::string::npos) {
    }
    reports.goOn();
    end.join();
    EXPECT_EQ(reports.all(), (std::vector<int>{0, SignedImages::kFailed}));
    EXPECT_EQ(names(), before);
}

// It was checked, and is another one when it is burnt.
TEST_F(BurnRunsTest, AnImageThatChangesMeanwhileIsNotInstalled) {
    const std::string content = signedImage(noise(3'000'000));
    const struct {
        const char* line;
        void (*change)(const std::string& path);
    } rows[] = {
        {"the image has become shorter meanwhile",
         [](const std::string& path) { std::filesystem::resize_file(path, 1'000'000); }},
        {"the image has changed meanwhile",
         [](const std::string& path) {
             std::fstream(path, std::ios::in | std::ios::out | std::ios::binary)
                 .seekp(2'000'000)
                 .put('!');
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        const std::string path = write(content);
        std::string error;
        ASSERT_TRUE(m_images->verify(path, "desk-1", error)) << error;
        Reports& reports = holdBurn(path);
        row.change(path);
        reports.goOn();
        EXPECT_EQ(reports.all().back(), SignedImages::kFailed);
        EXPECT_TRUE(names().empty());
        EXPECT_EQ(m_log.count(kLogError, row.line), 1);
    }
}

TEST_F(BurnRunsTest, FlashMemoryThatLeadsOutsideIsNotWritten) {
    std::filesystem::create_directory(m_directory.file("outside"));
    std::filesystem::create_directory_symlink(m_directory.file("outside"), root() + "/flash");
    EXPECT_THAT(refusalOf(write(signedImage("x"))), HasSubstr("something else than a directory"));
    EXPECT_TRUE(std::filesystem::is_empty(m_directory.file("outside")));

    std::filesystem::remove(root() + "/flash");
    std::filesystem::create_directory(root() + "/flash");
    std::filesystem::create_symlink(m_directory.file("canary"), root() + "/flash/bank-a.img.new");
    EXPECT_EQ(burn(signedImage("x")).back(), SignedImages::kDone);
    EXPECT_FALSE(std::filesystem::exists(m_directory.file("canary")));
}

TEST_F(BurnRunsTest, FullOrReadOnlyFlashMemoryKeepsTheOldImage) {
    if (!OwnMounts::arePossible()) {
        GTEST_SKIP() << "no mount namespaces here";
    }
    std::filesystem::create_directory(root() + "/flash");
    const std::string old = signedImage("old", "1.0");
    EXPECT_TRUE(OwnMounts::run([&, this] {
        if (!OwnMounts::mountDisk(root() + "/flash", 1024)) {
            return false;
        }
        runFrom(old);
        const std::string refusal = refusalOf(write(signedImage(noise(3'000'000))));
        return refusal.find("has room for") != std::string::npos && bank('a') == old &&
               names().size() == 2 &&
               burn(signedImage(noise(500'000))).back() == SignedImages::kDone;
    }));
    EXPECT_TRUE(OwnMounts::run([this] {
        return OwnMounts::makeReadOnly(root() + "/flash") &&
               burn(signedImage("new")).back() == SignedImages::kFailed &&
               m_log.count(kLogError, "Read-only file system") >= 1;
    }));
}

}  // namespace
}  // namespace vireo::test
