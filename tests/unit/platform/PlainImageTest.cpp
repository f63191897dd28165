#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "device/AdminProgressCallback.h"
#include "image/PlainImage.h"
#include "support/OwnMounts.h"
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

std::string payload(std::size_t size, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
    return bytes;
}

std::string imageOf(const std::string& content, const std::string& variant = "desk-1") {
    return "VIREO-IMAGE 1 " + variant + ' ' + std::to_string(content.size()) + '\n' + content;
}

class PlainImageTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directory(root());
        open();
    }

    void open() { m_image = std::make_unique<PlainImage>(root(), "flash", "desk-1"); }
    std::string root() const { return m_directory.file("root"); }
    std::string flash(const std::string& name) const { return root() + "/flash/" + name; }
    std::string burnt() const { return read(flash(PlainImage::kName)); }
    std::string write(const std::string& content) const {
        std::ofstream(m_directory.file("image"), std::ios::binary) << content;
        return m_directory.file("image");
    }
    static std::string read(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// Burns to the end and answers the reports; those of a refusal are its reason alone.
    std::vector<int> burn(const std::string& content) {
        Reports reports;
        std::string error;
        EXPECT_TRUE(m_image->burn(write(content), reports, error)) << error;
        std::vector<int> all = reports.all();
        awaitIdle();
        return all;
    }
    /// A burn is under way until its last report has returned, which is soon.
    void awaitIdle() const {
        while (m_image->isActive()) {
            std::this_thread::yield();
        }
    }
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& each : std::filesystem::directory_iterator(root() + "/flash")) {
            all.push_back(each.path().filename());
        }
        return all;
    }

    TemporaryDirectory m_directory;
    TestPorts m_log{kLogError};
    std::unique_ptr<PlainImage> m_image;
};

TEST_F(PlainImageTest, AnImageOfTheRightVariantIsBurnt) {
    const std::string first = imageOf(payload(5'000'000));
    const std::vector<int> reports = burn(first);
    EXPECT_GT(reports.size(), 10U);
    EXPECT_TRUE(std::is_sorted(reports.begin(), reports.end()));
    EXPECT_EQ(std::adjacent_find(reports.begin(), reports.end()), reports.end());
    EXPECT_GE(reports.front(), 0);
    EXPECT_EQ(reports.back(), PlainImage::kDone);
    EXPECT_EQ(burnt(), first);
    EXPECT_EQ(names(), std::vector<std::string>{PlainImage::kName});
    struct stat status {};
    ASSERT_EQ(::stat(flash(PlainImage::kName).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);

    const std::string second = imageOf("x");
    EXPECT_EQ(burn(second).back(), PlainImage::kDone);
    EXPECT_EQ(burnt(), second);
    EXPECT_EQ(m_image->hardwareVariant(), "desk-1");
}

TEST_F(PlainImageTest, WhatIsNoImageForThisPhoneIsRefusedWithItsReason) {
    using namespace std::string_literals;
    const struct {
        std::string content;
        const char* reason;
    } rows[] = {
        {"", "it is no software image"},
        {"\x7f"
         "ELF",
         "it is no software image"},
        {"VIREO-IMAGE 1 desk-1 1", "it is no software image"},
        {"VIREO-IMAGE 2 desk-1 1\nx", "it is no software image"},
        {" VIREO-IMAGE 1 desk-1 1\nx", "it is no software image"},
        {"VIREO-IMAGE 1 desk-1 1" + std::string(200, ' ') + "\nx", "it is no software image"},
        {"VIREO-IMAGE 1  1\nx", "its header has no hardware variant"},
        {"VIREO-IMAGE 1 desk/1 1\nx", "its header has no hardware variant"},
        {"VIREO-IMAGE 1 d\0 1\nx"s, "its header has no hardware variant"},
        {"VIREO-IMAGE 1 desk-1\nx", "its header has no size"},
        {"VIREO-IMAGE 1 desk-1 \nx", "its header has no size"},
        {"VIREO-IMAGE 1 desk-1 -1\nx", "its header has no size"},
        {"VIREO-IMAGE 1 desk-1 1 \nx", "its header has no size"},
        {"VIREO-IMAGE 1 desk-1 0x1\nx", "its header has no size"},
        {"VIREO-IMAGE 1 desk-1 99999999999999999999\nx", "its header has no size"},
        {"VIREO-IMAGE 1 desk-1 18446744073709551593\nx", "its header has no size"},
        {"VIREO-IMAGE 1 desk-1 0\n", "there is nothing in it"},
        {"VIREO-IMAGE 1 desk-1 2\nx", "it has 24 bytes instead of 25"},
        {"VIREO-IMAGE 1 desk-1 2\nxyz", "it has 26 bytes instead of 25"},
        {"VIREO-IMAGE 1 desk-2 1\nx", "it is for \"desk-2\", this phone is \"desk-1\""},
        {"VIREO-IMAGE 1 DESK-1 1\nx", "it is for \"DESK-1\", this phone is \"desk-1\""},
    };
    ASSERT_EQ(burn(imageOf("old")).back(), PlainImage::kDone);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.content.substr(0, 60));
        const std::string path = write(row.content);
        Reports reports;
        std::string error;
        EXPECT_FALSE(m_image->verify(path, "desk-1", error));
        EXPECT_EQ(error, "cannot use the image \"" + path + "\": " + row.reason);
        EXPECT_FALSE(m_image->burn(path, reports, error));
        EXPECT_EQ(error, "cannot use the image \"" + path + "\": " + row.reason);
        EXPECT_FALSE(m_image->isActive());
    }
    EXPECT_EQ(burnt(), imageOf("old"));
    std::string error;
    EXPECT_TRUE(m_image->verify(write(imageOf("x", "desk-2")), "desk-2", error)) << error;
    EXPECT_FALSE(m_image->verify(m_directory.file("missing"), "desk-1", error));
    EXPECT_NE(error.find("No such file"), std::string::npos) << error;
    EXPECT_FALSE(m_image->verify(root(), "desk-1", error));
    EXPECT_NE(error.find("it is no file"), std::string::npos) << error;
}

TEST_F(PlainImageTest, OneBurnAtATimeAndTheOldImageStaysUntilItsEnd) {
    ASSERT_EQ(burn(imageOf("old")).back(), PlainImage::kDone);
    const std::string content = imageOf(payload(3'000'000));
    Reports reports;
    reports.hold();
    std::string error;
    ASSERT_TRUE(m_image->burn(write(content), reports, error)) << error;
    reports.awaitFirst();
    EXPECT_TRUE(m_image->isActive());
    Reports other;
    EXPECT_FALSE(m_image->burn(m_directory.file("image"), other, error));
    EXPECT_NE(error.find("another burn is under way"), std::string::npos) << error;
    EXPECT_EQ(burnt(), imageOf("old"));
    reports.goOn();
    EXPECT_EQ(reports.all().back(), PlainImage::kDone);
    awaitIdle();
    EXPECT_EQ(burnt(), content);
}

TEST_F(PlainImageTest, TheEndOfThePhoneEndsABurnWithAFailureAndLeavesTheOldImage) {
    ASSERT_EQ(burn(imageOf("old")).back(), PlainImage::kDone);
    Reports reports;
    reports.hold();
    std::string error;
    ASSERT_TRUE(m_image->burn(write(imageOf(payload(3'000'000))), reports, error)) << error;
    reports.awaitFirst();
    std::thread end([this] { m_image->stop(); });
    // It is being stopped when another burn is refused for that.
    Reports other;
    do {
        EXPECT_FALSE(m_image->burn(m_directory.file("image"), other, error));
    } while (error.find("is being stopped") == std::string::npos);
    reports.goOn();
    end.join();
    EXPECT_EQ(reports.all().back(), PlainImage::kFailed);
    EXPECT_EQ(reports.all().size(), 2U);
    EXPECT_FALSE(m_image->isActive());
    EXPECT_EQ(burnt(), imageOf("old"));
    EXPECT_EQ(names(), std::vector<std::string>{PlainImage::kName});
}

TEST_F(PlainImageTest, AnImageThatChangesMeanwhileIsNotKept) {
    const std::string path = write(imageOf(payload(3'000'000)));
    Reports reports;
    reports.hold();
    std::string error;
    ASSERT_TRUE(m_image->burn(path, reports, error)) << error;
    reports.awaitFirst();
    std::filesystem::resize_file(path, 1'000'000);
    reports.goOn();
    EXPECT_EQ(reports.all().back(), PlainImage::kFailed);
    awaitIdle();
    EXPECT_TRUE(names().empty());
    EXPECT_EQ(m_log.count(kLogError, "the image has changed meanwhile"), 1);
}

TEST_F(PlainImageTest, WhatAKilledBurnLeftIsRemoved) {
    ASSERT_EQ(burn(imageOf("old")).back(), PlainImage::kDone);
    std::ofstream(flash(PlainImage::kHiddenName)) << "half";
    open();
    EXPECT_EQ(names(), std::vector<std::string>{PlainImage::kName});
    // And one that comes between is no way to write elsewhere.
    std::filesystem::create_symlink(m_directory.file("canary"), flash(PlainImage::kHiddenName));
    EXPECT_EQ(burn(imageOf("new")).back(), PlainImage::kDone);
    EXPECT_FALSE(std::filesystem::exists(m_directory.file("canary")));
    EXPECT_EQ(burnt(), imageOf("new"));
}

TEST_F(PlainImageTest, FlashMemoryThatLeadsOutsideIsNotWritten) {
    std::filesystem::create_directory(m_directory.file("outside"));
    std::filesystem::create_directory_symlink(m_directory.file("outside"), root() + "/flash");
    EXPECT_EQ(burn(imageOf("x")), std::vector<int>{PlainImage::kFailed});
    EXPECT_TRUE(std::filesystem::is_empty(m_directory.file("outside")));
}

TEST_F(PlainImageTest, FullOrReadOnlyFlashMemoryKeepsTheOldImage) {
    if (!OwnMounts::arePossible()) {
        GTEST_SKIP() << "no mount namespaces here";
    }
    std::filesystem::create_directory(root() + "/flash");
    EXPECT_TRUE(OwnMounts::run([this] {
        if (!OwnMounts::mountDisk(root() + "/flash", 1024)) {
            return false;
        }
        const bool isOldBurnt = burn(imageOf("old")).back() == PlainImage::kDone;
        const bool isNewRefused = burn(imageOf(payload(3'000'000))).back() == PlainImage::kFailed;
        return isOldBurnt && isNewRefused && burnt() == imageOf("old") && names().size() == 1 &&
               m_log.count(kLogError, "No space left on device") == 1 &&
               burn(imageOf(payload(500'000))).back() == PlainImage::kDone;
    }));
    EXPECT_TRUE(OwnMounts::run([this] {
        return OwnMounts::makeReadOnly(root() + "/flash") &&
               burn(imageOf("new")).back() == PlainImage::kFailed &&
               m_log.count(kLogError, "Read-only file system") == 1;
    }));
}

}  // namespace
}  // namespace vireo::test
