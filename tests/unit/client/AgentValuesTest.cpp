#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <sstream>
#include <string>

#include "AgentValues.h"

namespace vireo {
namespace {

std::shared_ptr<const DxlSchema> accountSchema() {
    DxlSchema schema("account");
    const DxlDataType* text = DxlSchema::findDataType("string");
    schema.makeDataNode(schema.buildRoot(), "user", 1, text, "nobody");
    schema.makeDataNode(schema.buildRoot(), "realm", 1, text, "");
    schema.finish();
    return std::make_shared<const DxlSchema>(schema);
}

// The items "account" and "other" have the schema of two parts, others have none.
std::string findAccount(const std::string& tag, ManageableData& record) {
    if (tag != "account" && tag != "other") {
        return {};
    }
    record.putSchema(accountSchema());
    return "account";
}

std::string read(AgentValues& values, const std::string& tag) {
    ManageableData record;
    record.addRootId("first", nullptr);
    record.addRootId(tag, nullptr);
    values.fill(record);
    std::string value = "absent";
    record.interogate(tag, tag, value);
    return value;
}

constexpr const char* kNobody = "<user>nobody</user><realm></realm>";
constexpr const char* kBob = "<user>bob</user><realm>r</realm>";

TEST(AgentValues, AnswersWhatWasWrittenElseTheFirstValueElseTheSchemas) {
    AgentValues values({{"plain", "1"}, {"account", kBob}}, findAccount);
    EXPECT_EQ(read(values, "plain"), "1");
    EXPECT_EQ(read(values, "nothing"), "");
    EXPECT_EQ(read(values, "account"), kBob);
    EXPECT_EQ(read(values, "other"), kNobody);

    ManageableData written;
    written.populate("plain", "2");
    written.populate("nothing", "<3>");
    written.putSchema(accountSchema());
    written.makeDocument("account", "other");
    ASSERT_TRUE(written.populate("other", "user", "eve"));
    for (const char* tag : {"plain", "nothing", "other"}) {
        EXPECT_TRUE(values.keep(written, tag));
    }
    EXPECT_FALSE(values.keep(written, "account")) << "the record does not have it";
    EXPECT_EQ(read(values, "plain"), "2");
    EXPECT_EQ(read(values, "nothing"), "<3>");
    EXPECT_EQ(read(values, "other"), "<user>eve</user><realm></realm>");
    EXPECT_EQ(read(values, "account"), kBob);

    values.reset();
    EXPECT_EQ(read(values, "plain"), "1");
    EXPECT_EQ(read(values, "other"), kNobody);
}

TEST(AgentValues, AnnouncesADocumentOfTheRightFormAndKeepsIt) {
    AgentValues values({}, findAccount);
    ManageableData record;
    EXPECT_TRUE(values.change({"account", kBob}, record));
    EXPECT_TRUE(values.change({"plain", "a=b"}, record));
    EXPECT_FALSE(values.change({"account", "<user>"}, record)) << "no inner XML";
    EXPECT_FALSE(values.change({"plain", "\x01"}, record));
    EXPECT_FALSE(values.change({"a/b", "1"}, record));
    EXPECT_EQ(record.rootIds(), (std::vector<std::string>{"account", "plain"}));
    EXPECT_EQ(record.getDocument("account")->schemaName(), "account");
    EXPECT_TRUE(record.getSchema("account"));
    EXPECT_EQ(read(values, "account"), kBob);
    EXPECT_EQ(read(values, "plain"), "a=b");
}

TEST(AgentValues, ReadsLinesAndNamesTheOneThatIsWrong) {
    const struct {
        const char* text;
        std::size_t count;
        const char* error;
    } rows[] = {
        {"# all\n\na=1\nb= x=2 \nc=", 3, ""},
        {"", 0, ""},
        {"a=1\nvolume\n", 0, "line 2: 'volume' is not TAG=VALUE"},
        {"=1", 0, "line 1: '=1' is not TAG=VALUE"},
        {"a=1\n#\na=2\n", 0, "'a' is given twice"},
    };
    for (const auto& row : rows) {
        std::istringstream lines(row.text);
        std::string error;
        const auto values = AgentValues::parse(lines, error);
        EXPECT_EQ(error, row.error);
        EXPECT_EQ(values.has_value(), error.empty());
        EXPECT_EQ(values ? values->size() : 0, row.count);
    }
}

}  // namespace
}  // namespace vireo
