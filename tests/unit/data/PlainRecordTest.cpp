#include <gtest/gtest.h>

#include "data/PlainRecord.h"
#include "data/RecordText.h"

namespace vireo {
namespace {

struct Row {
    const char* content;  ///< between the tags of a record
    bool isPlain;
};

const Row kRows[] = {
    {"", true},
    {"<rootId>a</rootId>", true},
    {"<rootId></rootId>", true},
    {"<rootId> </rootId>", true},
    {"<rootId>a</rootId><rootId>b</rootId><rootId>a</rootId>", true},
    {"<rootId>a</rootId><document name=\"a\" schema=\"s\">v</document>", true},
    {"<document name=\"a\" schema=\"s\"></document><rootId>a</rootId>", true},
    {"<document name=\"a\" schema=\"s\"> \t\n </document>", true},
    {"<document name=\"a\" schema=\"s\">1</document><document name=\"a\" schema=\"t\">2</document>",
     true},
    {"<document name=\"not a name'\" schema=\"s\">]]\"\x7f</document>", true},
    {"<document name=\"a\" schema=\"s\">\xc3\xa4\xf0\x9f\x93\x9e</document>", true},
    {"<schema name=\"s\" type=\"string\">d</schema><schema name=\"s\" type=\"string\"></schema>",
     true},
    // Left to the full reader, which takes them:
    {"<rootId with=\"c\">a</rootId>", false},
    {"<rootId>a&amp;b</rootId>", false},
    {"<rootId >a</rootId >", false},
    {"<document name=\"a\" schema=\"s\">&#13;</document>", false},
    {"<document name=\"a\" schema=\"s\">\r\n</document>", false},
    {"<document name=\"a\" schema=\"s\">]]></document>", false},
    {"<document name=\"a\" schema=\"s\"><b>v</b></document>", false},
    {"<document name=\"a\" schema=\"s\"><![CDATA[v]]></document>", false},
    {"<document name=\"a\" schema=\"s\">v<!-- --></document>", false},
    {"<document name=\"a\" schema=\"s\"/>", false},
    {"<document name='a' schema='s'>v</document>", false},
    {"<document schema=\"s\" name=\"a\">v</document>", false},
    {"<document name=\"a\" schema=\"s\" more=\"1\">v</document>", false},
    {"<document name=\"\xc3\xa4\" schema=\"s\">v</document>", false},
    {"<document name=\"a\tb\" schema=\"s\">v</document>", false},
    {"<schema name=\"s\"><data name=\"d\" type=\"string\">1</data></schema>", false},
    {"<refusal rootId=\"a\" path=\"//*\" reason=\"r\"/>", false},
    {" <rootId>a</rootId>\n", false},
    // Left to the full reader, which refuses them:
    {"text", false},
    {"<other>a</other>", false},
    {"<rootId>a</rootId", false},
    {"<rootId>a</document>", false},
    {"<rootId>\x01</rootId>", false},
    {"<rootId>\xff</rootId>", false},
    {"<document name=\"\" schema=\"s\">v</document>", false},
    {"<document name=\"a\" schema=\"1\">v</document>", false},
    {"<document name=\"a\" schema=\"s\">&x;</document>", false},
    {"<document name=\"a\" name=\"b\" schema=\"s\">v</document>", false},
    {"<document name=\"a<\" schema=\"s\">v</document>", false},
    {"<document name=\"a\x01\" schema=\"s\">v</document>", false},
    {"<document name=\"a\" schema=\"s\">\xed\xa0\x80</document>", false},
    {"<schema name=\"a b\" type=\"string\">d</schema>", false},
    {"<schema name=\"s\" type=\"number\">d</schema>", false},
    {"</record><record>", false},
};

/// Holds the short way to the full reader on one text.
void expectAlike(const std::string& text, bool isPlain) {
    ManageableData plain;
    ManageableData full;
    std::string error;
    const bool isTaken = PlainRecord::read(text, plain);
    EXPECT_EQ(isTaken, isPlain) << text;
    const bool isRecord = RecordText::readAny(text, full, error);
    if (isTaken) {
        EXPECT_TRUE(isRecord) << text << ": " << error;
        EXPECT_EQ(plain.serialize(), full.serialize());
        EXPECT_EQ(plain.rootIds(), full.rootIds()) << text;
        EXPECT_EQ(plain.isSingleRecord(), full.isSingleRecord()) << text;
    }
    ManageableData either;
    EXPECT_EQ(RecordText::read(text, either, error), isRecord) << text;
    if (isRecord) {
        EXPECT_EQ(either.serialize(), full.serialize());
    }
}

TEST(PlainRecord, TakesWhatTheFullReaderTakesAndReadsTheSame) {
    for (const Row& row : kRows) {
        expectAlike("<record>" + std::string(row.content) + "</record>", row.isPlain);
        expectAlike("<record single=\"1\">" + std::string(row.content) + "</record>", row.isPlain);
    }
    expectAlike(std::string("<record><rootId>a\0b</rootId></record>", 37), false);
    for (const char* text :
         {"", "<record", "<record>", "<record/>", "<record single=\"0\"></record>",
          "<record></record> ", "<record></record>x", " <record></record>"}) {
        expectAlike(text, false);
    }
}

TEST(PlainRecord, TakesEveryPlainRecordThatIsWritten) {
    ManageableData record;
    ASSERT_TRUE(record.populate("ringer-melody", std::string(200, 'v')));
    record.putSchema(std::make_shared<const DxlSchema>(
        std::make_shared<const DxlNode>("text", DxlNode::Kind::eLeaf, "d")));
    expectAlike(record.serialize(), true);
    record.setRootId("ringer-melody", nullptr);
    expectAlike(record.serialize(), true);
    for (std::size_t length = 0; length < record.serialize().size(); ++length) {
        expectAlike(record.serialize().substr(0, length), false);
    }
}

}  // namespace
}  // namespace vireo
