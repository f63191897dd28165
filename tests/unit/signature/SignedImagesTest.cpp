#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>
#include <vector>

#include "device/AdminProgressCallback.h"
#include "image/FlashDirectory.h"
#include "signature/ImageBurn.h"
#include "signature/ImageVerifier.h"
#include "signature/SignedImages.h"
#include "support/HostileImages.h"
#include "support/OwnMounts.h"
#include "support/SignedImage.h"
#include "support/TemporaryDirectory.h"
#include "support/TestPorts.h"

namespace vireo::test {
namespace {

/// Keeps the reports of a burn; holds the burn at a report until it may go on.
class Reports : public AdminProgressCallback {
public:
    bool progressNotify(int percent) override {
        std::unique_lock lock(m_mutex);
        m_reports.push_back(percent);
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_mayGoOn; });
        return true;
    }
    void hold() { setMayGoOn(false); }
    void goOn() { setMayGoOn(true); }
    /// Waits for the last report of a burn and answers all of them.
    std::vector<int> all() {
        await([this] {
            return !m_reports.empty() && (m_reports.back() < 0 || m_reports.back() == 99);
        });
        return m_reports;
    }
    void awaitFirst() {
        await([this] { return !m_reports.empty(); });
    }

private:
    template <class Condition>
    void await(Condition condition) {
        std::unique_lock lock(m_mutex);
        EXPECT_TRUE(m_changed.wait_for(lock, std::chrono::seconds(30), condition));
    }
    void setMayGoOn(bool mayGoOn) {
        const std::lock_guard lock(m_mutex);
        m_mayGoOn = mayGoOn;
        m_changed.notify_all();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<int> m_reports;
    bool m_mayGoOn = true;
};

/// Flash memory of which only so much is free.
class QuotaFlash : public FlashDirectory {
public:
    using FlashDirectory::FlashDirectory;
    std::uint64_t freeBytes() override { return std::min(quota, FlashDirectory::freeBytes()); }
    std::uint64_t quota = std::uint64_t{1} << 40U;
};

class SignedImagesTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(root() + "/keys");
        writeFile(root() + "/keys/one.pem", keyNumber(1).publicKey().pem());
        writeFile(root() + "/keys/two.pem", keyNumber(2).publicKey().pem());
        open();
    }

    /// The phone starts.
    void open(bool allowsDowngrade = false) {
        m_images.reset();
        m_flash = std::make_unique<QuotaFlash>(root(), "flash");
        m_banks = std::make_unique<SoftwareBanks>(*m_flash, ImageBurn::isPayloadWhole);
        m_banks->start();
        m_images = std::make_unique<SignedImages>(
            *m_flash, *m_banks, ImagePolicy{"desk-1", root() + "/keys", allowsDowngrade});
    }
    std::string root() const { return m_directory.file("root"); }
    std::string bank(char letter) const {
        return readFile(root() + "/flash/bank-" + letter + ".img");
    }
    std::string write(const std::string& content) const {
        writeFile(m_directory.file("image"), content);
        return m_directory.file("image");
    }
    std::vector<int> burn(const std::string& content) {
        Reports reports;
        std::string error;
        EXPECT_TRUE(m_images->burn(write(content), reports, error)) << error;
        std::vector<int> all = reports.all();
        awaitIdle();
        return all;
    }
    /// A burn is under way until its last report has returned, which is soon.
    void awaitIdle() const {
        while (m_images->isActive()) {
            std::this_thread::yield();
        }
    }
    void runFrom(const std::string& content) {
        ASSERT_EQ(burn(content).back(), SignedImages::kDone);
        open();
        ASSERT_TRUE(m_banks->confirm());
    }
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& each : std::filesystem::directory_iterator(root() + "/flash")) {
            all.push_back(each.path().filename());
        }
        std::sort(all.begin(), all.end());
        return all;
    }

    TemporaryDirectory m_directory;
    TestPorts m_log{kLogError};
    std::unique_ptr<QuotaFlash> m_flash;
    std::unique_ptr<SoftwareBanks> m_banks;
    std::unique_ptr<SignedImages> m_images;
};

TEST_F(SignedImagesTest, ImagesGoToTheBanksByTurns) {
    const std::string first = signedImage(noise(3'000'000), "1.0");
    const std::vector<int> reports = burn(first);
    EXPECT_GT(reports.size(), 10U);
    EXPECT_TRUE(std::is_sorted(reports.begin(), reports.end()));
    EXPECT_EQ(std::adjacent_find(reports.begin(), reports.end()), reports.end());
    EXPECT_EQ(reports.front(), 0);
    EXPECT_EQ(reports.back(), SignedImages::kDone);
    EXPECT_EQ(bank('a'), first);
    EXPECT_EQ(names(), (std::vector<std::string>{"bank-a.img", "boot"}));
    struct stat status {};
    ASSERT_EQ(::stat((root() + "/flash/bank-a.img").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    open();
    ASSERT_TRUE(m_banks->confirm());

    const std::string second = signedImage("x", "2.0");
    runFrom(second);
    EXPECT_EQ(bank('a'), first);
    EXPECT_EQ(bank('b'), second);
    EXPECT_EQ(m_banks->view().running, Bank::eB);
    runFrom(signedImage("y", "2.0.1"));
    EXPECT_EQ(bank('b'), second);
    EXPECT_EQ(bank('a'), signedImage("y", "2.0.1"));
}

TEST_F(SignedImagesTest, HostileImagesAreRefusedWithALineOfTheirOwn) {
    const std::string running = signedImage("running", kVersionUnderAttack);
    runFrom(running);
    const auto before = names();
    const std::string marker = readFile(root() + "/flash/boot");
    for (const Hostile& each : hostileImages()) {
        SCOPED_TRACE(each.what);
        const std::string path = write(each.content);
        std::string error;
        EXPECT_FALSE(m_images->verify(path, "desk-1", error));
        EXPECT_EQ(error, "cannot use the image \"" + path + "\": " + each.reason);
        // Who burns without asking first is refused as well, or fails on the way.
        Reports reports;
        if (m_images->burn(path, reports, error)) {
            EXPECT_EQ(reports.all().back(), SignedImages::kFailed);
            awaitIdle();
            EXPECT_EQ(m_log.count(kLogError, each.reason), 1);
            m_log.forgetLines();
        } else {
            EXPECT_EQ(error, "cannot burn the image \"" + path + "\": " + each.reason);
        }
        EXPECT_FALSE(m_images->isActive());
        EXPECT_EQ(names(), before);
        EXPECT_EQ(bank('a'), running);
        EXPECT_EQ(readFile(root() + "/flash/boot"), marker);
    }
    std::string error;
    EXPECT_TRUE(m_images->verify(write(signedImage(noise(100'000))), "desk-1", error)) << error;
    EXPECT_FALSE(m_images->verify(m_directory.file("none"), "desk-1", error));
    EXPECT_NE(error.find("No such file"), std::string::npos) << error;
    EXPECT_FALSE(m_images->verify(root(), "desk-1", error));
    EXPECT_NE(error.find("it is no file"), std::string::npos) << error;
}

TEST_F(SignedImagesTest, AnImageWithoutRoomIsRefusedBeforeItIsRead) {
    constexpr std::uint64_t kSize = std::uint64_t{4} << 30U;
    ImageHeader header = headerOf("x");
    header.payloadSize = kSize;
    const std::string path = write(signedImage(header, ""));
    if (::truncate(path.c_str(), static_cast<off_t>(kSize + ImageHeader::kSize)) != 0) {
        GTEST_SKIP() << "no files of that size here";
    }
    m_flash->quota = 1U << 20U;
    Reports reports;
    std::string error;
    EXPECT_FALSE(m_images->verify(path, "desk-1", error));
    EXPECT_EQ(error, "cannot use the image \"" + path +
                         "\": its payload size is 4294967296, and the flash memory has room for "
                         "983040 bytes with the header");
    EXPECT_FALSE(m_images->burn(path, reports, error));
    EXPECT_FALSE(std::filesystem::exists(root() + "/flash"));
}

TEST_F(SignedImagesTest, ADowngradeIsAMatterOfConfiguration) {
    runFrom(signedImage("running", "2.0"));
    std::string error;
    EXPECT_FALSE(m_images->verify(write(signedImage("old", "1.0")), "desk-1", error));
    EXPECT_TRUE(m_images->verify(write(signedImage("same", "2.0")), "desk-1", error)) << error;
    open(true);
    EXPECT_EQ(burn(signedImage("old", "1.0")).back(), SignedImages::kDone);
}

TEST_F(SignedImagesTest, KeysAreReplacedWithoutARestart) {
    const std::string byOne = signedImage(headerOf("x"), "x", keyNumber(1));
    const std::string byTwo = signedImage(headerOf("x"), "x", keyNumber(2));
    std::string error;
    EXPECT_TRUE(m_images->verify(write(byOne), "desk-1", error)) << error;
    EXPECT_TRUE(m_images->verify(write(byTwo), "desk-1", error)) << error;
    std::filesystem::remove(root() + "/keys/one.pem");
    EXPECT_FALSE(m_images->verify(write(byOne), "desk-1", error));
    EXPECT_TRUE(m_images->verify(write(byTwo), "desk-1", error)) << error;
    std::filesystem::remove_all(root() + "/keys");
    EXPECT_FALSE(m_images->verify(write(byTwo), "desk-1", error));
    EXPECT_TRUE(error.ends_with("it cannot be trusted: this phone has no trusted key")) << error;
}

TEST_F(SignedImagesTest, OneBurnAtATimeAndNoneDuringATrial) {
    runFrom(signedImage("old", "1.0"));
    const std::string content = signedImage(noise(3'000'000));
    Reports reports;
    reports.hold();
    std::string error;
    ASSERT_TRUE(m_images->burn(write(content), reports, error)) << error;
    reports.awaitFirst();
    EXPECT_TRUE(m_images->isActive());
    Reports other;
    EXPECT_FALSE(m_images->burn(m_directory.file("image"), other, error));
    EXPECT_NE(error.find("another burn is under way"), std::string::npos) << error;
    reports.goOn();
    EXPECT_EQ(reports.all().back(), SignedImages::kDone);
    awaitIdle();
    EXPECT_EQ(bank('b'), content);
    // What waits for its trial can be replaced, what is on trial cannot.
    EXPECT_EQ(burn(signedImage("newer", "3.0")).back(), SignedImages::kDone);
    open();
    EXPECT_FALSE(m_images->burn(write(signedImage("newest", "4.0")), other, error));
    EXPECT_NE(error.find("the software that runs is on trial"), std::string::npos) << error;
    EXPECT_TRUE(m_banks->confirm());
    EXPECT_EQ(burn(signedImage("newest", "4.0")).back(), SignedImages::kDone);
}

TEST_F(SignedImagesTest, TheEndOfThePhoneEndsABurnWithAFailure) {
    runFrom(signedImage("old", "1.0"));
    const auto before = names();
    Reports reports;
    reports.hold();
    std::string error;
    ASSERT_TRUE(m_images->burn(write(signedImage(noise(3'000'000))), reports, error)) << error;
    reports.awaitFirst();
    std::thread end([this] { m_images->stop(); });
    // It is being stopped when another burn is refused for that.
    Reports other;
    do {
        EXPECT_FALSE(m_images->burn(m_directory.file("image"), other, error));
    } while (error.find("is being stopped") == std::string::npos);
    reports.goOn();
    end.join();
    EXPECT_EQ(reports.all(), (std::vector<int>{0, SignedImages::kFailed}));
    EXPECT_EQ(names(), before);
}

// It was checked, and is another one when it is burnt.
TEST_F(SignedImagesTest, AnImageThatChangesMeanwhileIsNotInstalled) {
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
        Reports reports;
        reports.hold();
        std::string error;
        ASSERT_TRUE(m_images->verify(path, "desk-1", error)) << error;
        ASSERT_TRUE(m_images->burn(path, reports, error)) << error;
        reports.awaitFirst();
        row.change(path);
        reports.goOn();
        EXPECT_EQ(reports.all().back(), SignedImages::kFailed);
        awaitIdle();
        EXPECT_TRUE(names().empty());
        EXPECT_EQ(m_log.count(kLogError, row.line), 1);
    }
}

TEST_F(SignedImagesTest, FlashMemoryThatLeadsOutsideIsNotWritten) {
    std::filesystem::create_directory(m_directory.file("outside"));
    std::filesystem::create_directory_symlink(m_directory.file("outside"), root() + "/flash");
    Reports reports;
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

TEST_F(SignedImagesTest, FullOrReadOnlyFlashMemoryKeepsTheOldImage) {
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
        Reports reports;
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
