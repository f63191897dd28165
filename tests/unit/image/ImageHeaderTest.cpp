#include <gtest/gtest.h>

#include <cstdio>

#include "device/StorageError.h"
#include "image/ImageFile.h"
#include "support/ImageBytes.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {
namespace {

ImageHeader sample() {
    ImageHeader header;
    header.version = *SoftwareVersion::parse("258.3.4.5");
    header.payloadSize = 0x0102030405060708U & 0xffffffffffffffU;
    header.hardwareVariant = "desk-1";
    header.payloadDigest.fill(0xd1);
    header.keyId.fill(0xe2);
    header.signature.fill(0xf3);
    return header;
}

// Written out by hand: what one processor writes every other one has to read.
std::string sampleBytes() {
    using namespace std::string_literals;
    return "VIREOIMG"s + "\x00\x01"s + "\x01\x00"s + std::string(4, '\0') +
           "\x01\x02\x00\x03\x00\x04\x00\x05"s + "\x00\x02\x03\x04\x05\x06\x07\x08"s +
           ("desk-1" + std::string(58, '\0')) + std::string(32, '\xd1') + std::string(16, '\xe2') +
           std::string(48, '\0') + std::string(64, '\xf3');
}

ImageHeader::Bytes bytesOf(const std::string& text) {
    ImageHeader::Bytes bytes{};
    std::transform(text.begin(), text.end(), bytes.begin(),
                   [](char each) { return static_cast<unsigned char>(each); });
    return bytes;
}

TEST(ImageHeader, HasTheSameBytesOnEveryProcessor) {
    EXPECT_EQ(textOfBytes(sample().encode()), sampleBytes());
    std::string reason;
    const auto header = ImageHeader::decode(bytesOf(sampleBytes()), reason);
    ASSERT_TRUE(header) << reason;
    EXPECT_EQ(*header, sample());
    EXPECT_EQ(header->fileSize(), 0x02030405060708U + 256U);
    EXPECT_TRUE(header->isSigned());
}

TEST(ImageHeader, EveryFieldThatIsWrongIsNamed) {
    const struct {
        std::size_t at;
        std::string bytes;
        const char* reason;
    } rows[] = {
        {0, "v", "it is no software image: its magic is another one"},
        {7, std::string(1, '\0'), "it is no software image: its magic is another one"},
        {8, "\x01", "its format version is 257, known is 1"},
        {9, "\x02", "its format version is 2, known is 1"},
        {10, std::string(1, '\0'), "its header size is 0 instead of 256"},
        {11, "\x01", "its header size is 257 instead of 256"},
        {12, "\x01", "its reserved bytes are not zero"},
        {15, "\x80", "its reserved bytes are not zero"},
        {144, "\x01", "its reserved bytes are not zero"},
        {191, "\x01", "its reserved bytes are not zero"},
        {24, std::string(8, '\0'), "its payload size is zero: there is nothing in it"},
        {24, "\xff", "its payload size is 18375252745424078600, which no file can have"},
        {32, std::string(1, '\0'), "its hardware variant is no text"},
        {32, std::string(6, '\0'), "its hardware variant is no text"},
        {34, std::string(1, '\0'), "its hardware variant is no text"},
        {33, "/", "its hardware variant is no text"},
        {33, "\xe4", "its hardware variant is no text"},
        {95, "\x07", "its hardware variant is no text"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.at);
        std::string bytes = sampleBytes();
        bytes.replace(row.at, row.bytes.size(), row.bytes);
        std::string reason;
        EXPECT_FALSE(ImageHeader::decode(bytesOf(bytes), reason));
        EXPECT_TRUE(reason.starts_with(row.reason)) << reason;
    }
}

TEST(ImageHeader, TheLongestVariantFillsItsField) {
    ImageHeader header = sample();
    header.hardwareVariant = std::string(64, 'x');
    std::string reason;
    EXPECT_EQ(ImageHeader::decode(header.encode(), reason), header) << reason;
    EXPECT_FALSE(ImageHeader::isVariant(std::string(65, 'x')));
    EXPECT_FALSE(ImageHeader::isVariant(""));
}

TEST(SoftwareVersion, IsReadStrictlyAndOrderedByItsNumbers) {
    const struct {
        const char* text;
        const char* shown;
    } good[] = {{"1", "1.0.0"},         {"1.2", "1.2.0"},
                {"1.2.3", "1.2.3"},     {"1.2.3.0", "1.2.3"},
                {"0.0.0.1", "0.0.0.1"}, {"65535.65535.65535.65535", "65535.65535.65535.65535"}};
    for (const auto& row : good) {
        const auto version = SoftwareVersion::parse(row.text);
        ASSERT_TRUE(version) << row.text;
        EXPECT_EQ(version->text(), row.shown);
    }
    for (const char* text : {"", ".", "1.", ".1", "1..2", "1.2.3.4.5", "1.2.3.4.", "65536", "-1",
                             "+1", " 1", "1 ", "1a", "01", "1.00", "0x1"}) {
        EXPECT_FALSE(SoftwareVersion::parse(text)) << text;
    }
    const char* const ascending[] = {"0", "0.0.0.1", "0.9", "0.10", "1", "1.0.1", "2", "256"};
    for (std::size_t i = 1; i < std::size(ascending); ++i) {
        EXPECT_LT(*SoftwareVersion::parse(ascending[i - 1]), *SoftwareVersion::parse(ascending[i]));
    }
}

TEST(ImageFile, ReadsItsPayloadToTheAnnouncedEndAndNoFurther) {
    const TemporaryDirectory directory;
    const std::string path = directory.file("image");
    const std::string payload = noise(1000);
    ImageHeader header = sample();
    header.payloadSize = payload.size();
    const std::string bytes = textOfBytes(header.encode());
    writeFile(path, bytes + payload);
    std::string reason;
    const auto file = ImageFile::open(path, reason);
    ASSERT_TRUE(file) << reason;
    EXPECT_EQ(textOfBytes(file->headerBytes()), bytes);
    // What comes behind afterwards is nobody's.
    writeFile(path, bytes + payload + "behind");
    std::string read;
    unsigned char block[300];
    while (const std::size_t count = file->readPayload(read.size(), block)) {
        read.append(block, block + count);
    }
    EXPECT_EQ(read, payload);
    EXPECT_EQ(file->readPayload(5000, block), 0U);
    ASSERT_EQ(::truncate(path.c_str(), 500), 0);
    EXPECT_THROW(file->readPayload(0, block), StorageError);
}

}  // namespace
}  // namespace vireo::test
