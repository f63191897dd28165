#include <unistd.h>

#include "support/HostileImages.h"
#include "unit/signature/SignedImagesFixture.h"

namespace vireo::test {
namespace {

using SignedImagesTest = SignedImagesFixture;

TEST_F(SignedImagesTest, AnImageIsBurntWholeAndSaysHowFarItIs) {
    const std::string first = signedImage(noise(3'000'000), "1.0");
    const std::vector<int> reports = burn(first);
    EXPECT_GT(reports.size(), 10U);
    EXPECT_TRUE(std::is_sorted(reports.begin(), reports.end()));
    EXPECT_EQ(std::adjacent_find(reports.begin(), reports.end()), reports.end());
    EXPECT_EQ(reports.front(), 0);
    EXPECT_EQ(reports.back(), SignedImages::kDone);
    EXPECT_EQ(bank('a'), first);
    EXPECT_EQ(names(), (std::vector<std::string>{"bank-a.img", "boot"}));
    EXPECT_EQ(modeOf(root() + "/flash/bank-a.img"), 0600U);
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
        Reports& reports = newReports();
        if (m_images->burn(path, reports, error)) {
            EXPECT_EQ(reports.all().back(), SignedImages::kFailed);
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
    Reports& reports = newReports();
    std::string error;
    EXPECT_FALSE(m_images->verify(path, "desk-1", error));
    EXPECT_EQ(error, "cannot use the image \"" + path +
                         "\": its payload size is 4294967296, and the flash memory has room for "
                         "983040 bytes with the header");
    EXPECT_FALSE(m_images->burn(path, reports, error));
    EXPECT_FALSE(std::filesystem::exists(root() + "/flash"));
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

}  // namespace
}  // namespace vireo::test
