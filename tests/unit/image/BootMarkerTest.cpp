#include <gtest/gtest.h>

#include "image/BootMarker.h"

namespace vireo::test {
namespace {

TEST(BootMarker, IsALineThatComesBack) {
    const BootMarker plain;
    EXPECT_EQ(plain.text(),
              "VIREO-BOOT 1 bank=- state=confirmed starts=0 fallback=- failed=- check=bfa06de7\n");
    const BootMarker markers[] = {
        plain,
        {Bank::eA, false, 0, Bank::eNone, Bank::eB},
        {Bank::eB, true, 1, Bank::eA, Bank::eNone},
        {Bank::eB, true, BootMarker::kMostStarts, Bank::eB, Bank::eA},
    };
    for (const BootMarker& marker : markers) {
        EXPECT_EQ(BootMarker::parse(marker.text()), marker) << marker.text();
    }
}

TEST(BootMarker, NoBitOfItCanBeFlippedAndNothingCutOff) {
    const std::string text = BootMarker{Bank::eB, true, 1, Bank::eA, Bank::eNone}.text();
    for (std::size_t bit = 0; bit < 8 * text.size(); ++bit) {
        std::string flipped = text;
        flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << (bit % 8)));
        EXPECT_FALSE(BootMarker::parse(flipped)) << flipped;
    }
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_FALSE(BootMarker::parse(text.substr(0, size))) << size;
    }
    EXPECT_FALSE(BootMarker::parse(text + '\n'));
    EXPECT_FALSE(BootMarker::parse(text + text));
}

}  // namespace
}  // namespace vireo::test
