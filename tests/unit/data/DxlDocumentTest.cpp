#include <gtest/gtest.h>

#include "data/DxlCollection.h"
#include "data/DxlResultSet.h"
#include "support/TestPorts.h"

namespace vireo {
namespace {

using Rows = std::vector<std::string>;

Rows rowsOf(const DxlDocument& document, const std::string& path) {
    Rows rows;
    for (const auto set = document.select(path); !set->eof(); set->next()) {
        std::string value;
        bool isNull = false;
        set->getValue(value, isNull);
        rows.push_back(isNull ? "(null)" : value);
    }
    return rows;
}

class DxlDocumentTest : public ::testing::Test {
protected:
    DxlDocumentPointer import(const std::string& content) {
        ports.files["f.xml"] =
            "<dxl><document name=\"d\" schema=\"s\">" + content + "</document></dxl>";
        EXPECT_TRUE(collection.importFromFile("f.xml"));
        return collection.getDocument("d");
    }

    test::TestPorts ports;
    DxlCollection collection{"test"};
};

TEST_F(DxlDocumentTest, SelectYieldsOneRowPerParentSoListsStayAligned) {
    const auto document = import(R"(
        <item><id>a</id><default>1</default></item>
        <item><id>b</id></item>
        <item><id>c</id><default/></item>
        <item><default>4</default></item>
        <other/>)");
    EXPECT_EQ(rowsOf(*document, "/item/id"), (Rows{"a", "b", "c", "(null)"}));
    EXPECT_EQ(rowsOf(*document, "/item/default"), (Rows{"1", "(null)", "", "4"}));
    EXPECT_EQ(rowsOf(*document, "/nothing/id"), Rows{});
    EXPECT_EQ(rowsOf(*document, "/nothing"), Rows{"(null)"});
}

TEST_F(DxlDocumentTest, SelectKnowsItsPathForms) {
    const auto document = import("<a><b>1</b><b>2</b></a>");
    EXPECT_EQ(rowsOf(*document, "/"), Rows{"<a><b>1</b><b>2</b></a>"});
    EXPECT_EQ(rowsOf(*document, "//*").size(), 4U);
    EXPECT_EQ(rowsOf(*document, "/a/b"), (Rows{"1", "2"}));
    for (const char* path : {"", "a", "/a//b", "/*", "/a/..", "/a/", "//a", "/a/b[1]"}) {
        EXPECT_EQ(rowsOf(*document, path), Rows{}) << path;
    }
}

TEST_F(DxlDocumentTest, FindsAmongManyChildrenIncludingRepeatedNames) {
    std::string content;
    for (int i = 0; i < 200; ++i) {
        content += "<n" + std::to_string(i % 100) + ">" + std::to_string(i) + "</n" +
                   std::to_string(i % 100) + ">";
    }
    const auto document = import(content);
    EXPECT_EQ(rowsOf(*document, "/n42"), (Rows{"42", "142"}));
    EXPECT_EQ(document->root()->child("n99")->text(), "99");
    EXPECT_EQ(document->root()->child("n100"), nullptr);
}

TEST_F(DxlDocumentTest, ResultSetOutlivesItsDocumentAndCanRewind) {
    auto document = import("<a>1</a><a>2</a>");
    const auto rows = document->select("/a");
    document.reset();
    collection.clear();
    rows->next();
    rows->rewind();
    std::string value;
    bool isNull = true;
    rows->getValue(value, isNull);
    EXPECT_EQ(value, "1");
}

TEST_F(DxlDocumentTest, RestoresDefaultsOfSelectedNodesOnly) {
    ports.files["s.xml"] =
        R"(<dxl><schema name="s"><data name="a" type="string">A</data><branch name="b">
           <data name="c" type="string">C</data></branch></schema></dxl>)";
    ASSERT_TRUE(collection.importFromFile("s.xml"));
    const auto document = import("<a>1</a><b><c>2</c><x>3</x></b>");
    const auto schema = collection.getSchema("s");
    const auto restore = [&](const char* path) {
        return document->select(path)->restoreDefaults(*schema)->value();
    };
    EXPECT_EQ(restore("/b/c"), "<a>1</a><b><c>C</c><x>3</x></b>");
    EXPECT_EQ(restore("/b/x"), "<a>1</a><b><c>2</c><x></x></b>");
    EXPECT_EQ(restore("//*"), "<a>A</a><b><c>C</c></b>");
    EXPECT_EQ(document->root()->value(), "<a>1</a><b><c>2</c><x>3</x></b>");
}

// What is wrong in a file is refused as a whole; that is seen with the plain files.
TEST_F(DxlDocumentTest, WhatIsMissingOrNestedTooDeepIsSaidInOneLine) {
    std::string deep;
    for (int i = 0; i < 65; ++i) {
        deep = "<n>" + deep + "</n>";
    }
    ports.files["deep.xml"] =
        "<dxl><document name=\"x\" schema=\"s\">" + deep + "</document></dxl>";
    EXPECT_FALSE(collection.importFromFile("deep.xml"));
    EXPECT_EQ(ports.lines(kLogError).size(), 1U);
    EXPECT_FALSE(collection.importFromFile("absent.xml"));
    EXPECT_EQ(ports.count(kLogError, "\"absent.xml\" failed: no such file"), 1);
}

TEST_F(DxlDocumentTest, TheFirstDocumentOfANameStaysAndTheLaterOneIsReported) {
    ports.files["a.xml"] = "<dxl><document name=\"d\" schema=\"s\">1</document></dxl>";
    ports.files["b.xml"] =
        "<dxl><document name=\"d\" schema=\"s\">2</document>"
        "<document name=\"e\" schema=\"s\">3</document></dxl>";
    EXPECT_TRUE(collection.importFromFile("a.xml"));
    EXPECT_TRUE(collection.importFromFile("b.xml"));
    EXPECT_EQ(collection.getDocument("d")->root()->value(), "1");
    EXPECT_EQ(collection.getDocument("e")->root()->value(), "3");
    EXPECT_EQ(ports.count(kLogWarning, "\"d\" of \"b.xml\" left out"), 1);
}

TEST_F(DxlDocumentTest, MakeDocumentKeepsOneThatIsThere) {
    collection.makeSchema("s")->finish();
    const auto first = collection.makeDocument("s", "x");
    EXPECT_EQ(collection.makeDocument("s", "x"), first);
    EXPECT_EQ(collection.makeDocument("unknown", "y"), nullptr);
}

}  // namespace
}  // namespace vireo
