#include "support/ItemCalls.h"
#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

std::string storedText(const std::string& file, const std::string& query) {
    const Outcome outcome = ChildProcess::run({"sqlite3", "-readonly", file, query});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return outcome.out;
}

std::string hex(const std::string& bytes) {
    std::string text;
    char digits[3];
    for (const char c : bytes) {
        std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(c));
        text += digits;
    }
    return text + "\n";
}

TEST(Values, EveryValueComesBackByteForByteFromMessageAndStore) {
    RunningPhone phone;
    const auto client = phone.connect();
    ASSERT_TRUE(client);
    ASSERT_TRUE(writeItems(*client, {"ringer-volume=neighbour column", "key-label-2=neighbour row"})
                    .result);

    for (const std::string& value :
         Words{"a&b", "<x>", "\"'", "]]>", "</RingerMelody>", "</RingerMelody><Other>9</Other>",
               "</Label></Entry></Schema>", "\xc3\xa4\xe2\x82\xac\xf0\x9f\x93\x9e",
               std::string(64U << 10U, 'z'), "  leading", "trailing \n", "\r\n\t", "&amp;&#13;", "",
               "x"}) {
        SCOPED_TRACE(value.substr(0, 40));
        const Words items{"ringer-melody=" + value, "key-label-1=" + value};
        EXPECT_TRUE(writeItems(*client, items).result);
        EXPECT_TRUE(readItems(*client, {"ringer-melody", "key-label-1"}).items == items);
        EXPECT_TRUE(storedText(phone.storeFile(), "SELECT hex(RingerMelody) FROM PhoneSettings") ==
                    hex(value));
        EXPECT_TRUE(storedText(phone.storeFile(),
                               "SELECT hex(Label) FROM ProgrammableKeys WHERE KeyIndex = '1'") ==
                    hex(value));
    }
    EXPECT_EQ(storedText(phone.storeFile(), "SELECT RingerVolume FROM PhoneSettings"),
              "neighbour column\n");
    EXPECT_EQ(
        storedText(phone.storeFile(), "SELECT Label FROM ProgrammableKeys WHERE KeyIndex = '2'"),
        "neighbour row\n");
    EXPECT_EQ(storedText(phone.storeFile(), "SELECT count(*) FROM ProgrammableKeys"), "2\n");
}

}  // namespace
}  // namespace vireo::test
