#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "signature/ImageVerifier.h"
#include "support/SignedImage.h"

namespace vireo::test {
namespace {

class ImageVerifierTest : public ::testing::Test {
protected:
    ImageVerifierTest() {
        m_keys.add(keyNumber(1).publicKey());
        m_demands.hardwareVariant = "desk-1";
    }

    /// What is wrong with the image; empty when nothing is.
    std::string faultOf(const std::string& content) {
        FileDescriptor file(::memfd_create("image", MFD_CLOEXEC));
        EXPECT_EQ(::write(file.get(), content.data(), content.size()),
                  static_cast<ssize_t>(content.size()));
        std::string reason;
        const auto image = ImageFile::adopt(std::move(file), reason);
        if (image && ImageVerifier::checkHeader(*image, m_demands, m_keys, reason) &&
            ImageVerifier::checkPayload(*image, reason)) {
            return {};
        }
        EXPECT_FALSE(reason.empty());
        return reason;
    }

    TrustedKeys m_keys;
    ImageVerifier::Demands m_demands;
};

TEST_F(ImageVerifierTest, NoBitOfTheHeaderCanBeFlipped) {
    const std::string image = signedImage("payload");
    ASSERT_EQ(faultOf(image), "");
    for (std::size_t bit = 0; bit < 8 * ImageHeader::kSize; ++bit) {
        std::string flipped = image;
        flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << (bit % 8)));
        EXPECT_NE(faultOf(flipped), "") << "bit " << bit;
    }
}

TEST_F(ImageVerifierTest, NoBitOfThePayloadCanBeFlipped) {
    const std::string payload = noise(ImageVerifier::kBlock + 100);
    const std::string image = signedImage(payload);
    for (const std::size_t at :
         {std::size_t{0}, ImageVerifier::kBlock - 1, ImageVerifier::kBlock, payload.size() - 1}) {
        std::string flipped = image;
        flipped[ImageHeader::kSize + at] = static_cast<char>(flipped[ImageHeader::kSize + at] ^ 1);
        EXPECT_EQ(faultOf(flipped), "its payload is not the one that was signed") << at;
    }
}

TEST_F(ImageVerifierTest, ThePhonesDemandsHoldToTheVersionAndToTheByte) {
    const std::string image = signedImage("payload", "2.1.0");
    m_demands.oldestVersion = SoftwareVersion::parse("2.1.0");
    m_demands.room = 263;
    EXPECT_EQ(faultOf(image), "");
    m_demands.oldestVersion = SoftwareVersion::parse("2.1.0.1");
    EXPECT_EQ(faultOf(image),
              "its software version 2.1.0 is older than 2.1.0.1, and downgrades are not allowed");
    m_demands.oldestVersion.reset();
    m_demands.room = 262;
    EXPECT_EQ(faultOf(image),
              "its payload size is 7, and the flash memory has room for 262 bytes with the header");
}

}  // namespace
}  // namespace vireo::test
