#include <gtest/gtest.h>

#include <string>

#include "data/ByteScan.h"
#include "data/XmlText.h"

namespace vireo {
namespace {

// Long enough to be passed over in one go, with something else before, at and behind each place.
const std::string kPlain = "abcdefghijklmnopqrstuvw";

TEST(XmlText, FindsWhatXmlCannotCarryWhereverItStands) {
    for (const char bad : {'\x01', '\x1f', '\x80', '\xff'}) {
        for (std::size_t at = 0; at < kPlain.size(); ++at) {
            std::string text = kPlain;
            text[at] = bad;
            for (const char* before : {"", "\n", "\xc3\xa4"}) {
                const auto found = XmlText::findUncarriable(before + text);
                ASSERT_TRUE(found) << at;
                const std::string place =
                    "position " + std::to_string(std::string(before).size() + at);
                EXPECT_EQ(found->substr(found->find("position")), place);
            }
        }
    }
    for (const char* carriable :
         {"", "\t\n\r", "\x7f", "abcdefgh\n", "\xc3\xa4 \xf0\x9f\x98\x80"}) {
        EXPECT_FALSE(XmlText::findUncarriable(kPlain + carriable + kPlain)) << carriable;
    }
}

TEST(XmlText, IsPlainWhereNothingIsEscapedAndAllCanBeCarried) {
    for (int byte = 0; byte <= 0xFF; ++byte) {
        for (std::size_t at = 0; at < kPlain.size(); ++at) {
            std::string text = kPlain;
            text[at] = static_cast<char>(byte);
            std::string escaped;
            XmlText::appendEscaped(escaped, text);
            EXPECT_EQ(XmlText::isPlain(text), escaped == text && !XmlText::findUncarriable(text))
                << byte << " at " << at;
        }
    }
    EXPECT_TRUE(XmlText::isPlain(""));
    EXPECT_TRUE(XmlText::isPlain(kPlain + "\n\xc3\xa4\t" + kPlain));
}

TEST(XmlText, EscapesWhereverItIsNeeded) {
    const struct {
        char character;
        const char* inText;
        const char* inAttribute;
    } escapes[] = {
        {'&', "&amp;", "&amp;"}, {'<', "&lt;", "&lt;"},    {'>', "&gt;", "&gt;"},
        {'"', "\"", "&quot;"},   {'\r', "&#13;", "&#13;"}, {'\n', "\n", "&#10;"},
        {'\t', "\t", "&#9;"},    {'\'', "'", "'"},         {'\xe4', "\xe4", "\xe4"},
        {'%', "%", "%"},         {'=', "=", "="},          {'\0', "", ""},
    };
    for (const auto& escape : escapes) {
        for (std::size_t at = 0; at < kPlain.size(); ++at) {
            const std::string given =
                kPlain.substr(0, at) + std::string(2, escape.character) + kPlain.substr(at);
            const auto expected = [&](const char* form) {
                const std::string one =
                    escape.character == '\0' ? std::string(1, '\0') : std::string(form);
                return "(" + kPlain.substr(0, at) + one + one + kPlain.substr(at);
            };
            std::string text = "(";
            XmlText::appendEscaped(text, given);
            EXPECT_EQ(text, expected(escape.inText));
            std::string attribute = "(";
            XmlText::appendEscapedAttribute(attribute, given);
            EXPECT_EQ(attribute, expected(escape.inAttribute));
        }
    }
}

TEST(ByteScan, PlainTextIsPrintableAsciiInLines) {
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
