#include <gtest/gtest.h>

#include "snmp/TrapReceiverText.h"

namespace vireo::test {
namespace {

TEST(TrapReceiverText, TakesReceiversApartAndNamesWhatIsWrong) {
    const struct {
        const char* text;
        const char* host;
        const char* port;
        SnmpVersion version;
        bool isConfirmed;
        const char* user;
    } rows[] = {
        {"192.0.2.1 v1", "192.0.2.1", "", SnmpVersion::eV1, false, ""},
        {"  host.example:1162\tv2c  inform ", "host.example", "1162", SnmpVersion::eV2c, true, ""},
        {"* v3 user=phone inform", "*", "", SnmpVersion::eV3, true, "phone"},
        {"2001:db8::1 v2c", "2001:db8::1", "", SnmpVersion::eV2c, false, ""},
        {"[2001:db8::1]:99 v2c", "2001:db8::1", "99", SnmpVersion::eV2c, false, ""},
        {"[::1] v1", "::1", "", SnmpVersion::eV1, false, ""},
    };
    std::string error;
    for (const auto& row : rows) {
        const auto parsed = TrapReceiverText::parse(row.text, error);
        ASSERT_TRUE(parsed) << row.text << error;
        EXPECT_EQ(parsed->host, row.host);
        EXPECT_EQ(parsed->port, row.port);
        EXPECT_EQ(parsed->version, row.version);
        EXPECT_EQ(parsed->isConfirmed, row.isConfirmed);
        EXPECT_EQ(parsed->user, row.user);
    }
    for (const char* wrong : {"", "host", "host v4", "host: v1", "host:0 v1", "host:99999 v1",
                              ":1 v1", "[::1 v1", "[::1]x v1", "host v1 inform", "host v3",
                              "host v2c user=a", "host v3 user=", "host v1 x", "[::1]: v1"}) {
        EXPECT_FALSE(TrapReceiverText::parse(wrong, error)) << wrong;
        EXPECT_NE(error.find("is no receiver of traps: "), std::string::npos) << error;
    }
}

TEST(TrapReceiverText, TheFirstThatFitsCountsAndOthersGetVersion1) {
    TrapOptions options;
    for (const char* text : {"a:1 v2c", "a v2c inform", "b v2c"}) {
        std::string error;
        options.receivers.push_back(TrapReceiverText::parse(text, error).value());
    }
    EXPECT_FALSE(findReceiver(options, "a", "1").isConfirmed);
    EXPECT_EQ(findReceiver(options, "a", "1").version, SnmpVersion::eV2c);
    EXPECT_TRUE(findReceiver(options, "a", "2").isConfirmed);
    EXPECT_EQ(findReceiver(options, "c", "1").version, SnmpVersion::eV1);
}

}  // namespace
}  // namespace vireo::test
