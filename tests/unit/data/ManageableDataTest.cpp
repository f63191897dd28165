#include <gtest/gtest.h>

#include "data/ManageableData.h"
#include "data/XmlText.h"
#include "support/TestPorts.h"

namespace vireo {
namespace {

using Ids = std::vector<std::string>;

ManageableData reread(const ManageableData& record,
                      ManageableData::serializationType type = ManageableData::eEverything) {
    ManageableData copy;
    EXPECT_TRUE(copy.deserialize(record.serialize(type)));
    return copy;
}

std::string valueOf(const ManageableData& record, const std::string& rootId,
                    const std::string& nodeId) {
    std::string value = "(absent)";
    record.interogate(rootId, nodeId, value);
    return value;
}

DxlCollection schemas() {
    test::TestPorts ports(0);
    ports.files["s.xml"] = R"(<dxl>
        <schema name="text" type="string">dflt</schema>
        <schema name="pair"><data name="first" type="string">1</data>
            <branch name="group"><data name="second" type="string">2</data></branch></schema>
        <schema name="wrapped"><data name="the-tag" type="string"/></schema>
        <schema name="list"></schema></dxl>)";
    DxlCollection collection("schemas");
    EXPECT_TRUE(collection.importFromFile("s.xml"));
    return collection;
}

TEST(ManageableData, RootIdsKeepTheirOrderAndOnlyAnswerASingleOne) {
    ManageableData record;
    EXPECT_EQ(record.getRootId(), "");
    record.setRootId("a", nullptr);
    EXPECT_EQ(record.getRootId(), "a");
    EXPECT_TRUE(record.isSingleRecord());
    record.addRootId("a", nullptr);
    EXPECT_TRUE(record.isSingleRecord()) << "adding what is there changes nothing";
    record.addRootId("b", nullptr);
    EXPECT_EQ(record.getRootId(), "") << "nobody may take the first of several for all";
    EXPECT_FALSE(record.isSingleRecord());
    for (int i = 0; i < 40; ++i) {
        record.addRootId("n" + std::to_string(i % 20), nullptr);
    }
    ASSERT_EQ(record.rootIds().size(), 22U);
    record.removeRootId("n3");
    record.addRootId("n3", nullptr);
    EXPECT_EQ(record.rootIds().back(), "n3");
    record.setRootId(record.rootIds().front(), nullptr);
    EXPECT_EQ(record.rootIds(), Ids{"a"});
}

TEST(ManageableData, TextFormKeepsTheDifferenceBetweenSingleAndListedIds) {
    ManageableData single;
    single.setRootId("a", nullptr);
    EXPECT_TRUE(reread(single).isSingleRecord());
    ManageableData listed;
    listed.addRootId("a", std::string("beside"));
    EXPECT_FALSE(reread(listed).isSingleRecord());
    EXPECT_EQ(reread(listed).companion("a"), "beside");

    ManageableData target;
    target.addRootId("x", nullptr);
    EXPECT_TRUE(target.deserialize(single.serialize()));
    EXPECT_EQ(target.rootIds(), (Ids{"x", "a"}));
    EXPECT_FALSE(target.isSingleRecord());
}

TEST(ManageableData, EveryCarriableValueRoundTripsByteForByte) {
    const std::string big(64U << 10U, 'x');
    for (const std::string& value : std::vector<std::string>{
             "", " ", "  lead", "trail \n", "a&b", "<x>", "\"'", "]]>", "&amp;", "&#13;", "\r\n\t",
             "\r", "</record>", "<![CDATA[x]]>", "<!-- c -->",
             "\xc3\xa4\xe2\x82\xac\xf0\x9f\x93\x9e", "\x7f", "a=\"b\"", big}) {
        ManageableData record;
        ASSERT_TRUE(record.populate("tag", "tag", value)) << value;
        const ManageableData copy = reread(record);
        EXPECT_EQ(valueOf(copy, "tag", "tag"), value);
        EXPECT_EQ(copy.serialize(), record.serialize());
    }
}

TEST(ManageableData, WhatXmlCannotCarryIsRefusedAndTheOldValueStays) {
    ManageableData record;
    ASSERT_TRUE(record.populate("tag", "tag", "old"));
    for (const std::string& value :
         std::vector<std::string>{std::string("a\0b", 3), "\x01", "\x1f", "\xff", "\xc3",
                                  "\xed\xa0\x80", "\xef\xbf\xbf", "\xc0\x80", "\xf4\x90\x80\x80"}) {
        EXPECT_FALSE(record.populate("tag", "tag", value));
        EXPECT_TRUE(XmlText::findUncarriable(value));
        EXPECT_EQ(valueOf(record, "tag", "tag"), "old");
    }
    EXPECT_EQ(XmlText::findUncarriable("ab\x01"), "byte 0x01 at position 2");
    for (const char* tag : {"", "*", "a/b", "..", "1a", "a b", "a:b", "-x"}) {
        EXPECT_FALSE(record.populate(tag, tag, "v")) << tag;
    }
    EXPECT_EQ(record.rootIds(), Ids{"tag"});
}

TEST(ManageableData, PopulateWithoutSchemaMakesAProvisionalDocument) {
    ManageableData record;
    ASSERT_TRUE(record.populate("tag", "v"));
    EXPECT_EQ(record.rootIds(), Ids{"tag"});
    EXPECT_EQ(record.getDocument("tag")->schemaName(), "tag");
    EXPECT_EQ(record.interogate("tag")->value(), "v");

    ManageableData nested;
    ASSERT_TRUE(nested.populate("stats", "lost", "3"));
    ASSERT_TRUE(nested.populate("stats", "late", "4"));
    EXPECT_EQ(valueOf(nested, "stats", "lost"), "3");
    EXPECT_EQ(valueOf(nested, "stats", "stats"), "<lost>3</lost><late>4</late>");
    EXPECT_FALSE(record.populate("tag", "below", "x")) << "a root with text takes no children";
}

TEST(ManageableData, SchemaSaysWhatIsALeafAndWhereAbsentNodesBelong) {
    const DxlCollection source = schemas();
    ManageableData record;
    for (const char* name : {"text", "pair", "wrapped", "list"}) {
        ASSERT_TRUE(record.copySchema(name, source));
    }
    EXPECT_FALSE(record.makeDocument("unknown", "a"));
    ASSERT_TRUE(record.makeDocument("text", "a"));
    EXPECT_EQ(valueOf(record, "a", "a"), "dflt");
    ASSERT_TRUE(record.populate("a", "a", "<b/>"));
    EXPECT_EQ(valueOf(record, "a", "a"), "<b/>") << "a leaf stores text as text";

    ASSERT_TRUE(record.makeDocument("wrapped", "the-tag"));
    ASSERT_TRUE(record.populate("the-tag", "the-tag", "w"));
    EXPECT_EQ(record.getDocument("the-tag")->root()->value(), "<the-tag>w</the-tag>");
    EXPECT_EQ(valueOf(record, "the-tag", "the-tag"), "w");

    ASSERT_TRUE(record.makeDocument("pair", "p"));
    EXPECT_FALSE(record.populate("p", "third", "x"));
    ASSERT_TRUE(record.populate("p", "p", "<first>9</first>")) << "a branch takes inner XML";
    ASSERT_TRUE(record.populate("p", "second", "8")) << "the schema has a place for it";
    EXPECT_EQ(valueOf(record, "p", "pair"), "<first>9</first><group><second>8</second></group>");
    EXPECT_FALSE(record.populate("p", "p", "<first>")) << "malformed";
    EXPECT_EQ(valueOf(record, "p", "first"), "9");

    ASSERT_TRUE(record.makeDocument("list", "l"));
    ASSERT_TRUE(record.populate("l", "l", " mixed <b k=\"1&quot;\">x</b> text<c/>"));
    EXPECT_EQ(valueOf(reread(record), "l", "l"), " mixed <b k=\"1&quot;\">x</b> text<c></c>");
}

TEST(ManageableData, MakingALeafIsMakingADocumentAndPopulatingIt) {
    const DxlCollection source = schemas();
    const struct {
        const char* schema;
        const char* rootId;
        const char* value;
        bool isMade;
    } rows[] = {
        {"text", "a", "v", true},   {"text", "a", "", true},   {"text", "text", "<b>", true},
        {"pair", "a", "v", false},  {"list", "a", "v", false}, {"missing", "a", "v", false},
        {"text", "1a", "v", false}, {"text", "", "v", false},  {"text", "a", "\x01", false},
    };
    for (const auto& row : rows) {
        ManageableData made;
        for (const char* name : {"text", "pair", "list"}) {
            made.copySchema(name, source);
        }
        ManageableData expected(made);
        EXPECT_EQ(made.makeLeaf(row.schema, row.rootId, std::string(row.value)), row.isMade)
            << row.rootId;
        if (row.isMade) {
            ASSERT_TRUE(expected.makeDocument(row.schema, row.rootId));
            ASSERT_TRUE(expected.populate(row.rootId, row.value));
        }
        EXPECT_EQ(made.serialize(), expected.serialize());
    }
}

TEST(ManageableData, DeserializeOverlaysAndMalformedTextChangesNothing) {
    ManageableData text;
    text.populate("a", "new");
    text.populate("b", "2");
    text.addRejectReason("b", "//*", "why \"not\" <&>");

    ManageableData record;
    record.populate("c", "3");
    record.populate("a", "old");
    record.addRejectReason("c", "//*", "first");
    const std::string before = record.serialize();
    for (const char* bad :
         {"", "<record>", "<record/>x", "<record/><record/>", "<other/>", "<record><x/></record>",
          "<record><document name=\"a\"/></record>", "<record>&x;</record>",
          "<!DOCTYPE record [<!ENTITY e \"1\">]><record/>", "<record>\x01</record>",
          "<record>text</record>",
          // What looks like a comment in an attribute must not hide what follows.
          "<record><document name=\"a\" schema=\"s\" z=\"<!--\">&#1;</document>"
          "<document name=\"b\" schema=\"s\" z=\"-->\"/></record>",
          "<record z='&#1;'/>",
          "<record><document name=\"a\" schema=\"s\">x<!--><![CDATA[-->&#1;<!--]]>--></document>"
          "</record>",
          "<record><schema name=\"s\"><data name=\"a\" name=\"b\" "
          "type=\"string\"/></schema></record>",
          "<record><schema name=\"s\">text</schema></record>", "<record", "<record z=\"/>",
          "<record><rootId>a<b/></rootId></record>",
          "<record><rootId with=\"1\" with=\"2\">a</rootId></record>",
          "<record><document name=\"a\" name=\"b\" schema=\"s\"/></record>",
          "<record><document name=\"a\" schema=\"s\"><x k=\"1\" k=\"2\"/></document></record>"}) {
        EXPECT_FALSE(record.deserialize(bad)) << bad;
        EXPECT_EQ(record.serialize(), before) << bad;
    }
    ASSERT_TRUE(record.deserialize(text.serialize()));
    EXPECT_EQ(record.rootIds(), (Ids{"c", "a", "b"}));
    EXPECT_EQ(valueOf(record, "a", "a"), "new");
    ASSERT_EQ(record.rejections().size(), 2U);
    EXPECT_EQ(record.rejections()[1].reason(), "why \"not\" <&>");
    EXPECT_TRUE(reread(record, ManageableData::eWithoutRejections).rejections().empty());
}

TEST(ManageableData, CopiesShareNothingThatCanChange) {
    ManageableData record;
    record.populate("a", "1");
    const DataNode handle = record.interogate("a");
    ManageableData copy(record);
    copy.populate("a", "2");
    record.removeRootId("a");
    EXPECT_EQ(valueOf(copy, "a", "a"), "2");
    EXPECT_EQ(handle->value(), "1") << "a handle shows the state of its look-up";
    EXPECT_EQ(record.getDocument("a"), nullptr);
    EXPECT_FALSE(record.interogate("a"));

    copy.clearAll();
    EXPECT_EQ(copy.serialize(), ManageableData().serialize());
}

TEST(ManageableData, KeepsItsTextUntilItChanges) {
    const DxlCollection source = schemas();
    ManageableData other;
    other.populate("b", "2");
    using Change = void (*)(ManageableData&, const DxlCollection&, const ManageableData&);
    const Change changes[] = {
        [](auto& record, auto&, auto&) { record.addRootId("c", nullptr); },
        [](auto& record, auto&, auto&) { record.addRootId("a", std::string("beside")); },
        [](auto& record, auto&, auto&) { record.setRootId("a", nullptr); },
        [](auto& record, auto&, auto&) { record.removeRootId("a"); },
        [](auto& record, auto&, auto&) { record.removeRootIds({"a"}); },
        [](auto& record, auto&, auto&) { record.populate("a", "2"); },
        [](auto& record, auto&, auto& from) { record.populate("a", from.interogate("b")); },
        [](auto& record, auto& from, auto&) { record.copySchema("text", from); },
        [](auto& record, auto&, auto& from) { record.copyDocument("b", from); },
        [](auto& record, auto&, auto&) { record.addRejectReason("a", "//*", "no"); },
        [](auto& record, auto&, auto&) {
            record.addRejectReasons({{"a", "//*", "no"}});
        },
        [](auto& record, auto&, auto&) { record.clearRejectReasons(); },
        [](auto& record, auto&, auto& from) { record.overlay(from); },
        [](auto& record, auto&, auto& from) { record.deserialize(from.serialize()); },
        [](auto& record, auto&, auto&) { record.clearAll(); },
    };
    for (const Change& change : changes) {
        ManageableData kept;
        kept.populate("a", "1");
        kept.addRejectReason("a", "//*", "why");
        ManageableData plain(kept);
        kept.keepText();
        EXPECT_TRUE(ManageableData(kept).keepsText());
        EXPECT_EQ(kept.serialize(), plain.serialize());
        EXPECT_EQ(kept.serialize(ManageableData::eWithoutRejections),
                  plain.serialize(ManageableData::eWithoutRejections));
        change(kept, source, other);
        change(plain, source, other);
        EXPECT_FALSE(kept.keepsText()) << &change - changes;
        EXPECT_NE(plain.serialize(), "");
        EXPECT_EQ(kept.serialize(), plain.serialize()) << &change - changes;
    }
}

TEST(ManageableData, CopyDocumentLeavesTheListAlone) {
    ManageableData source;
    source.populate("a", "1");
    ManageableData target;
    EXPECT_TRUE(target.copyDocument("a", source));
    EXPECT_FALSE(target.copyDocument("b", source));
    EXPECT_TRUE(target.rootIds().empty());
    EXPECT_EQ(valueOf(target, "a", "a"), "1");
}

TEST(ManageableData, FindsSchemasInItsDictionary) {
    DxlCollection dictionary = schemas();
    ManageableData record(&dictionary);
    EXPECT_TRUE(record.makeDocument("text", "a"));
    EXPECT_EQ(valueOf(record, "a", "a"), "dflt");
}

}  // namespace
}  // namespace vireo
