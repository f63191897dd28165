#include <fstream>
#include <thread>

#include "support/OwnMounts.h"
#include "unit/signature/SignedImagesFixture.h"

namespace vireo::test {
namespace {

using BurnRunsTest = SignedImagesFixture;

TEST_F(BurnRunsTest, OneBurnAtATimeAndNoneDuringATrial) {
    runFrom(signedImage("old", "1.0"));
    const std::string content = signedImage(noise(3'000'000));
    Reports& reports = newReports();
    reports.hold();
    std::string error;
    ASSERT_TRUE(m_images->burn(write(content), reports, error)) << error;
    reports.awaitFirst();
    EXPECT_TRUE(m_images->isActive());
    Reports& other = newReports();
    EXPECT_FALSE(m_images->burn(m_directory.file("image"), other, error));
    EXPECT_NE(error.find("another burn is under way"), std::string::npos) << error;
    reports.goOn();
    EXPECT_EQ(reports.all().back(), SignedImages::kDone);
    EXPECT_EQ(bank('b'), content);
    // What waits for its trial can be replaced, what is on trial cannot.
    EXPECT_EQ(burn(signedImage("newer", "3.0")).back(), SignedImages::kDone);
    open();
    EXPECT_FALSE(m_images->burn(write(signedImage("newest", "4.0")), other, error));
    EXPECT_NE(error.find("the software that runs is on trial"), std::string::npos) << error;
    EXPECT_TRUE(m_banks->confirm());
    EXPECT_EQ(burn(signedImage("newest", "4.0")).back(), SignedImages::kDone);
}

TEST_F(BurnRunsTest, TheEndOfThePhoneEndsABurnWithAFailure) {
    runFrom(signedImage("old", "1.0"));
    const auto before = names();
    Reports& reports = newReports();
    reports.hold();
    std::string error;
    ASSERT_TRUE(m_images->burn(write(signedImage(noise(3'000'000))), reports, error)) << error;
    reports.awaitFirst();
    std::thread end([this] { m_images->stop(); });
    // It is being stopped when another burn is refused for that.
    Reports& other = newReports();
    do {
        EXPECT_FALSE(m_images->burn(m_directory.file("image"), other, error));
    } while (error.find("is being stopped") == std::string::npos);
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
        Reports& reports = newReports();
        reports.hold();
        std::string error;
        ASSERT_TRUE(m_images->verify(path, "desk-1", error)) << error;
        ASSERT_TRUE(m_images->burn(path, reports, error)) << error;
        reports.awaitFirst();
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
    Reports& reports = newReports();
    std::string error;
    EXPECT_FALSE(m_images->burn(write(signedImage("x")), reports, error));
    EXPECT_NE(error.find("something else than a directory"), std::string::npos) << error;
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
        std::string error;
        Reports& reports = newReports();
        const bool isRefused =
            !m_images->burn(write(signedImage(noise(3'000'000))), reports, error) &&
            error.find("has room for") != std::string::npos;
        return isRefused && bank('a') == old && names().size() == 2 &&
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
