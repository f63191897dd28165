#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "signature/ImageVerifier.h"
#include "support/SignedImage.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {
namespace {

class ImageVerifierTest : public ::testing::Test {
protected:
    ImageVerifierTest() {
        m_keys.add(keyNumber(1).publicKey());
        m_keys.add(keyNumber(2).publicKey());
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

    TemporaryDirectory m_directory;
    TrustedKeys m_keys;
    ImageVerifier::Demands m_demands;
};

TEST_F(ImageVerifierTest, EveryTrustedKeyIsGood) {
    const std::string payload = noise(1'300'000);
    EXPECT_EQ(faultOf(signedImage(headerOf(payload), payload, keyNumber(1))), "");
    EXPECT_EQ(faultOf(signedImage(headerOf(payload), payload, keyNumber(2))), "");
    const std::string other = textOf(keyNumber(3).publicKey().id());
    EXPECT_EQ(faultOf(signedImage(headerOf(payload), payload, keyNumber(3))),
              "its key id " + other + " is none of the trusted keys");
    EXPECT_EQ(faultOf(textOfBytes(headerOf(payload).encode()) + payload), "it is not signed");
    m_keys = TrustedKeys();
    EXPECT_EQ(faultOf(signedImage(payload)), "it cannot be trusted: this phone has no trusted key");
}

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

TEST_F(ImageVerifierTest, ThePhonesDemandsAreNamed) {
    const std::string image = signedImage("payload", "2.1.0");
    m_demands.hardwareVariant = "desk-2";
    EXPECT_EQ(faultOf(image), "its hardware variant is \"desk-1\", this phone is \"desk-2\"");
    m_demands.hardwareVariant = "desk-1";
    m_demands.oldestVersion = SoftwareVersion::parse("2.1.0");
    EXPECT_EQ(faultOf(image), "");
    m_demands.oldestVersion = SoftwareVersion::parse("2.1.0.1");
    EXPECT_EQ(faultOf(image),
              "its software version 2.1.0 is older than 2.1.0.1, and downgrades are not allowed");
    m_demands.oldestVersion.reset();
    m_demands.room = 262;
    EXPECT_EQ(faultOf(image),
              "its payload size is 7, and the flash memory has room for 262 bytes with the header");
    m_demands.room = 263;
    EXPECT_EQ(faultOf(image), "");
}

// A file with a hole that large costs nothing to make, and would take long to read.
TEST_F(ImageVerifierTest, WhatHasNoRoomIsNotReadFirst) {
    constexpr std::uint64_t kSize = std::uint64_t{4} << 30U;
    ImageHeader header = headerOf("x");
    header.payloadSize = kSize;
    m_demands.room = 1U << 30U;
    const std::string path = m_directory.file("image");
    writeFile(path, signedImage(header, ""));
    if (::truncate(path.c_str(), static_cast<off_t>(kSize + ImageHeader::kSize)) != 0) {
        GTEST_SKIP() << "no files of that size here";
    }
    std::string reason;
    const auto image = ImageFile::open(path, reason);
    ASSERT_TRUE(image) << reason;
    EXPECT_FALSE(ImageVerifier::checkHeader(*image, m_demands, m_keys, reason));
    EXPECT_EQ(reason,
              "its payload size is 4294967296, and the flash memory has room for 1073741824 bytes "
              "with the header");
}

}  // namespace
}  // namespace vireo::test
