#include <gtest/gtest.h>

#include "store/StoreCatalogue.h"

namespace vireo {
namespace {

TEST(StoreCatalogue, IsRefusedAsAWholeWithAnErrorThatNamesTheFault) {
    const struct {
        const char* content;
        const char* error;
    } cases[] = {
        {R"(<table><column name="a"/></table>)", "a table without a name"},
        {R"(<table name="T"/>)", "table \"T\" has no columns"},
        {R"(<table name="9T"><column name="a"/></table>)", "bad table name \"9T\""},
        {R"(<table name="T&#10;x"><column name="a"/></table>)", "bad table name \"T?x\""},
        {R"(<table name="T"><column/></table>)", "table \"T\": a column without a name"},
        {R"(<table name="T"><column name=""/></table>)", "bad column name \"\""},
        {R"(<table name="T"><column name="a b"/></table>)", "bad column name \"a b\""},
        {R"(<table name="T"><column name="a&quot;b"/></table>)", "bad column name \"a\"b\""},
        {R"(<table name="T"><column name="-a"/></table>)", "bad column name \"-a\""},
        {R"(<table name="T" index="x:y"><column name="a"/></table>)", "bad index name \"x:y\""},
        {R"(<table name="T"><column name="a"/></table><table name="t"><column name="a"/></table>)",
         "duplicate table name \"t\""},
        {R"(<table name="T"><column name="ab"/><column name="aB"/></table>)",
         "table \"T\": duplicate column name \"aB\""},
        {R"(<table name="T" index="Id"><column name="ID"/></table>)", "duplicate column name \"ID"},
        {R"(<table name="T"><column name="Schema"/></table>)", "\"Schema\": the name is reserved"},
        {R"(<table name="T"><column name="ReasonForMessage"/></table>)", "is reserved"},
        {R"(<table name="T"><column name="Error"/></table>)", "is reserved"},
        {R"(<table name="SQLite_x"><column name="a"/></table>)", "are reserved"},
        {R"(<tabel name="T"/>)", "unknown element \"tabel\""},
        {R"(<table name="T"><colunm name="a"/></table>)", "unknown element \"colunm\""},
        {R"(<table name="T"><column name="a"><x/></column></table>)", "\"a\" is not empty"},
        {R"(<table name="T">a<column name="a"/></table>)", "text between the elements"},
        {R"(<table name="T" indx="I"><column name="a"/></table>)", "unknown attribute \"indx\""},
        {R"(<table name="T"><column name="a" reboot="yes"/></table>)", "\"a\": reboot is neither"},
        {R"(<table name="T"><column name="a" name="b"/></table>)", "attribute \"name\" twice"},
    };
    for (const auto& test : cases) {
        // The fault stands behind a sound table, which must not be kept either.
        const std::string xml = R"(<store><table name="Sound"><column name="a"/></table>)" +
                                std::string(test.content) + "</store>";
        std::string error;
        EXPECT_FALSE(StoreCatalogue::parse(xml, error)) << xml;
        EXPECT_NE(error.find(test.error), std::string::npos) << xml << "\n" << error;
    }
    for (const char* xml : {"", "<store>", "<stores/>", "<store/><store/>", "<store a=\"1\"/>"}) {
        std::string error;
        EXPECT_FALSE(StoreCatalogue::parse(xml, error)) << xml;
        EXPECT_FALSE(error.empty()) << xml;
    }
}

}  // namespace
}  // namespace vireo
