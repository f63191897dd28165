#include <gtest/gtest.h>

#include <string>

#include "data/ByteScan.h"

namespace vireo {
namespace {

TEST(ByteScanTest, PlainTextIsPrintableAsciiInLines) {
    for (int byte = 0; byte < 256; ++byte) {
        const bool isPlain =
            (byte >= 0x20 && byte < 0x80) || byte == '\n' || byte == '\r' || byte == '\t';
        for (const std::size_t size : {1U, 7U, 8U, 9U, 17U, 24U}) {
            for (const char around : {'a', ' ', '\n', '\r', '\x7f'}) {
                for (std::size_t at = 0; at < size; ++at) {
                    std::string text(size, around);
                    text[at] = static_cast<char>(byte);
                    EXPECT_EQ(ByteScan::isPlainText(text), isPlain)
                        << byte << " at " << at << " of " << size;
                }
            }
        }
    }
    EXPECT_TRUE(ByteScan::isPlainText(""));
}

}  // namespace
}  // namespace vireo
