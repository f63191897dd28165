#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "data/DxlCollection.h"
#include "data/DxlRows.h"
#include "support/TestPorts.h"

namespace vireo {
namespace {

using Texts = std::vector<std::string>;

/// What a configuration file means, or how it is refused.
struct Meaning {
    Texts texts;  ///< of documents and schemas
    Texts rows;   ///< as the service reads them when it starts
    Texts errors;

    friend bool operator==(const Meaning&, const Meaning&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Meaning& meaning) {
        for (const Texts* part : {&meaning.texts, &meaning.rows, &meaning.errors}) {
            for (const std::string& line : *part) {
                out << line << '\n';
            }
        }
        return out;
    }
};

Texts walk(const DxlDocument& document, std::string_view row,
           std::initializer_list<std::string_view> columns) {
    Texts lines;
    for (DxlRows rows(document, row, columns); rows.next();) {
        std::string line;
        for (std::size_t i = 0; i < std::max<std::size_t>(1, columns.size()); ++i) {
            line += (rows.has(i) ? rows.text(i) : "(none)") + "|";
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

class PlainFileTest : public ::testing::Test {
protected:
    Meaning read(const std::string& content) {
        ports.forgetLines();
        ports.files["f.xml"] = content;
        DxlCollection collection("test");
        collection.importFromFile("f.xml");
        Meaning meaning;
        plain = 0;
        for (const auto& document : collection.documents()) {
            plain += document->source() != nullptr ? 1 : 0;
            for (const Texts& lines :
                 {walk(*document, "item", {"id", "value", "more"}), walk(*document, "id", {}),
                  walk(*document, "row", {"value"}), walk(*document, "item", {})}) {
                meaning.rows.insert(meaning.rows.end(), lines.begin(), lines.end());
            }
            meaning.texts.push_back(document->text());
        }
        for (const auto& schema : collection.schemas()) {
            meaning.texts.push_back(schema->text());
        }
        meaning.errors = ports.lines(kLogError);
        for (const std::string& warning : ports.lines(kLogWarning)) {
            meaning.errors.push_back(warning);
        }
        return meaning;
    }

    /// A word to some other program is not plain, so all of the file is read as a tree.
    Meaning readAsTree(std::string content) {
        return read(content.insert(content.rfind("</dxl>"), "<?other program?>"));
    }

    test::TestPorts ports;
    int plain = 0;  ///< documents without a tree
};

const std::string kRow = "<item><id>a</id><value>1</value></item>";

std::string document(const std::string& content) {
    return R"(<document name="d" schema="s">)" + content + "</document>";
}

TEST_F(PlainFileTest, ContentMeansWhatItsTreeMeans) {
    const struct {
        std::string content;
        bool isPlain;
    } rows[] = {
        {kRow + kRow + kRow, true},
        {kRow + "<item><id>b</id></item><item><value>3</value><id>c</id></item>", true},
        {"\n  <item>\n    <id>a</id>\r\n\t<value> spaced\n</value>\n  </item>\n" + kRow, true},
        {kRow + "<!-- <item> --><item><!-- - --><id>b</id><!----></item>" + kRow, true},
        {"<item><id>&amp;&lt;&#x41;&#8364;</id><value>a&gt;b</value></item>", true},
        {"<id>a&amp;b</id><id>c</id>", true},
        {"<id>\xef\xbb\xbf&amp;</id><id>\xef\xbb\xbf</id>", true},
        {"<item><id>]]> \"quoted\" 'so'</id></item>", true},
        {"<item/><item></item><item> </item><item>text</item><item><id/></item>" + kRow, true},
        {"<item><id/><value>1</value></item><item><id/><value>2</value></item>", true},
        {"<item><id></id><value/></item><item><id></id><value/></item>", true},
        {"<id>a</id><other/><id>b</id>" + kRow + "<other><id>c</id></other>", true},
        {"<row><value>1</value><id>x</id></row>" + kRow + "<row><id>y</id></row>", true},
        {"<item><id>\xc3\xa9</id></item>", true},
        {"<item><more>1</more><id>a</id></item><item><id>b</id></item>"
         "<item><id>c</id><more>2</more></item>",
         true},
        {"<item><id>a<!-- - -->b</id></item>", false},
        {"<item><id><![CDATA[a<b]]></id></item>", false},
        {kRow + "<item> <id>a</id> stray <value>1</value></item>", false},
        {kRow + "stray", false},
        {"<item><id>a</id><id>b</id><value>1</value></item>" + kRow, false},
        {"<item><value>1</value></item><item><id>a</id><id>b</id></item>" + kRow, false},
        {"<item><id>a</id><value><deep>1</deep></value></item>", false},
        {R"(<item kind="x"><id>a</id></item>)" + kRow, false},
        {"<item ><id >a</id ></item >", false},
        {"<item> <!-- no more --> </item>", false},
        {"<n\xc3\xa9><id>1</id></n\xc3\xa9>", false},
        {"", false},
        {"text alone", false},
    };
    for (const auto& [content, isPlain] : rows) {
        for (const std::string& indentation : Texts{"", "\n  ", "\r\n\t"}) {
            const std::string file = "<?xml version=\"1.0\"?>" + indentation + "<dxl>" +
                                     indentation + document(content) + indentation +
                                     "<schema name=\"s\"/></dxl>" + indentation;
            const Meaning meaning = read(file);
            EXPECT_EQ(plain == 1, isPlain) << file;
            EXPECT_EQ(meaning, readAsTree(file)) << file;
            EXPECT_EQ(plain, 0);
        }
    }
}

TEST_F(PlainFileTest, AFaultIsRefusedInTheSameWordsAndKeepsEverythingOut) {
    const std::string good = R"(<document name="e" schema="s">)" + kRow + "</document>";
    Texts faults{R"(<document name="d">)" + kRow + "</document>",
                 R"(<document name="" schema="s">)" + kRow + "</document>",
                 R"(<document name="d" schema="a b">)" + kRow + "</document>",
                 R"(<document name="d" schema="s" name="f">)" + kRow + "</document>",
                 R"(<document name="" schema="s" name="f">)" + kRow + "</document>",
                 R"(<document schema="" name="d" schema="s">)" + kRow + "</document>",
                 R"(<schema name="x" type="float">1</schema>)",
                 R"(<schema name="x"><branch/></schema>)",
                 R"(<schema name="x"/>stray</schema>)",
                 "<schema/>",
                 "<thing/>",
                 "</dxl><dxl>",
                 "</document>"};
    for (const std::string& content :
         Texts{"<item><id>a</id></item", "<item><id>a</value></item>", "<item><id>a</id></Item>",
               "<item><id>a</item></id>", "<item><id>\x01</id></item>",
               "<item><id>\xff</id></item>", "<item>&#0;</item>", "<!-- <item><id>a</id></item>",
               "<1item><id>a</id></1item>", "<ns:item><id>a</id></ns:item>", "<!DOCTYPE x>",
               kRow + "<item><id>b</id><value>1</valu></item>",
               kRow + "<item><id>b</id><value>1</value></iten>",
               kRow + "<item><id>b</id><value>1</value>",
               kRow + "<item><id>&nbsp;</id><value>1</value></item>",
               kRow + "<item><id>a & b</id><value>1</value></item>"}) {
        faults.push_back(document(content));
    }
    for (const std::string& fault : faults) {
        const std::string file = "<dxl>\n" + good + fault + "\n</dxl>\n";
        const Meaning meaning = read(file);
        EXPECT_EQ(meaning, readAsTree(file)) << file;
        EXPECT_TRUE(meaning.texts.empty() && meaning.errors.size() == 1) << file << meaning;
    }
}

std::string headed(const std::string& attributes) {
    return "<document" + attributes + ">" + kRow + "</document>";
}

TEST_F(PlainFileTest, AWholeFileMeansWhatItsTreesMean) {
    const struct {
        std::string file;
        int tables;  // documents that are plain
    } rows[] = {
        {"<!-- c --><dxl><!-- c -->" + document(kRow) + "<!-- c --></dxl><!-- c -->\n", 1},
        {"<dxl>" + headed(R"( schema='s'  name="d e" )") + "</dxl>", 1},
        {"<dxl>" + headed("\n\tname='d'\n\tschema='s'\n") + "</dxl>", 1},
        {"<dxl>" + headed(R"( name = "d" schema="s")") + "</dxl>", 0},
        {"<dxl>" + headed(R"( name="&amp;" schema="s")") + "</dxl>", 0},
        {"<dxl>" + headed(R"( name="d" schema="s" more="m")") + "</dxl>", 0},
        {"<dxl>" + headed(R"(name="d" schema="s")") + "</dxl>", 0},
        {"<dxl>" + document(kRow) + document("<id>2</id>") + "</dxl>", 1},
        {"<dxl>" + document(kRow) +
             R"(<schema name="x"><data name="y" type="string">z</data></schema></dxl>)",
         1},
        {"<dxl>" + document(kRow) +
             R"(<document name="deep" schema="s"><a b="/>"><c>1</c></a></document></dxl>)",
         1},
        {"<dxl>" + document(kRow) +
             R"(<document name="e" schema="s"><document name="f" schema="s">)" + kRow +
             "</document></document></dxl>",
         0},
        {R"(<dxl><schema name="x"><!-- </schema> --></schema>)" + document(kRow) + "</dxl>", 0},
        {"<dxl>" + document(kRow) + "stray</dxl>", 0},
        {"<dxl version=\"1\">" + document(kRow) + "</dxl>", 0},
        {"\xef\xbb\xbf<dxl>" + document(kRow) + "</dxl>", 0},
        {"<dxl>" + document(kRow) + "</dxl><dxl></dxl>", 0},
        {"<dxl>" + document(kRow) + "</dxl>stray", 0},
        {"stray<dxl>" + document(kRow) + "</dxl>", 0},
        {"<dxl></dxl>", 0},
    };
    for (const auto& [file, tables] : rows) {
        const Meaning meaning = read(file);
        EXPECT_EQ(plain, tables) << file;
        EXPECT_EQ(meaning, readAsTree(file)) << file;
    }
}

TEST_F(PlainFileTest, ARowOfManyElementsIsNotPlain) {
    std::string content = kRow;
    for (int i = 0; i < 40; ++i) {
        const std::string name = "n" + std::to_string(i);
        content += std::string("<item><").append(name).append("/></item>");
        content.insert(content.rfind("</item>"), "<id>" + name + "</id>");
    }
    content += "<item>";
    for (int i = 0; i < 40; ++i) {
        content += "<n" + std::to_string(i) + "/>";
    }
    const std::string file = "<dxl>" + document(content + "<id>z</id></item>") + "</dxl>";
    EXPECT_EQ(read(file), readAsTree(file));
}

TEST_F(PlainFileTest, TheSampleConfigurationMeansWhatItsTreesMean) {
    int tables = 0;
    for (const auto& entry : std::filesystem::directory_iterator(VIREO_CONFIG)) {
        std::ifstream stream(entry.path(), std::ios::binary);
        const std::string file{std::istreambuf_iterator<char>(stream), {}};
        if (file.find("<dxl>") != std::string::npos) {
            const Meaning meaning = read(file);
            tables += plain;
            EXPECT_EQ(meaning, readAsTree(file)) << entry.path();
            EXPECT_EQ(meaning.errors, Texts{}) << entry.path();
        }
    }
    EXPECT_GT(tables, 20);
}

TEST_F(PlainFileTest, ThreadsThatAskForATreeAtOnceGetTheSame) {
    std::string content;
    for (int i = 0; i < 200; ++i) {
        content += "<item><id>" + std::to_string(i) + "</id></item>";
    }
    ports.files["f.xml"] = "<dxl>" + document(content) + "</dxl>";
    for (int round = 0; round < 20; ++round) {
        DxlCollection collection("test");
        collection.importFromFile("f.xml");
        const auto shared = collection.getDocument("d");
        const DxlNode* roots[2] = {};
        std::thread other([&] { roots[0] = shared->root().get(); });
        roots[1] = shared->root().get();
        other.join();
        EXPECT_EQ(roots[0], roots[1]);
        EXPECT_EQ(roots[0]->children().size(), 200U);
    }
}

}  // namespace
}  // namespace vireo
