#include "StoreFixture.h"
#include "store/StoreRequest.h"

namespace vireo {
namespace {

class StoreRequestTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string error;
        m_catalogue = StoreCatalogue::parse(
            R"(<store><table name="S"><column name="col"/><column name="other"/></table>
               <table name="K" index="Id"><column name="col"/><column name="other"/></table>
               </store>)",
            error);
        ASSERT_TRUE(m_catalogue) << error;
    }

    bool parse(const std::string& text) {
        m_text = text;  // what was found are parts of it
        return StoreRequest::parse(m_text, *m_catalogue, m_request, m_fault);
    }

    std::optional<StoreCatalogue> m_catalogue;
    std::string m_text;
    StoreRequest m_request;
    StoreRequestFault m_fault;
};

// What it takes, and that literally, is seen in the values of the store.
TEST_F(StoreRequestTest, RefusesWhatIsNoRequestAndSaysWhy) {
    const std::string good = updateText("S", element("col", "v"));
    ASSERT_TRUE(parse(good));
    for (std::size_t length = 0; length < good.size(); ++length) {
        EXPECT_FALSE(parse(good.substr(0, length))) << length;
        EXPECT_FALSE(m_fault.what.empty());
    }
    const std::string reason = "\"><ReasonForMessage>";
    const struct {
        std::string text;
        const char* what;
        const char* name;
    } cases[] = {
        {" " + good, "the request does not begin with its schema", ""},
        {good + "\n", "the schema does not end", ""},
        {readText("", "col"), "unknown table", ""},
        {readText("s", "col"), "unknown table", "s"},
        {readText("S\" x=\"", "col"), "the schema name is not followed by a reason", ""},
        {readText("S", "Col"), "unknown column", "Col"},
        {readText("K", "Id", "<Entry><Id>1</Id></Entry>"), "unknown column", "Id"},
        {readText("S", "col,other"), "the result column does not end", ""},
        {readText("S", "col", "<Entry><Id>1</Id></Entry>"),
         "more than a result column for a table without index", ""},
        {readText("K", "col"), "no entry for the index", "Id"},
        {readText("K", "col", "<Entry><Ix>1</Ix></Entry>"), "no entry for the index", "Id"},
        {readText("K", "col", "<Entry><Id>1</Ix></Entry>"),
         "the entry does not end behind the index", "Id"},
        {updateText("S", "<nope>1</nope>"), "unknown column", "nope"},
        {updateText("S", "<col>1</other>"), "the column does not begin", "other"},
        {updateText("S", ""), "an update without a column", ""},
        {updateText("S", "<col/>"), "an update without a column", ""},
        {updateText("S", "<Entry><Id>1</Id><col>1</col></Entry>"), "unknown column", "Entry"},
        {updateText("K", "<col>1</col>"), "no entry for the index", "Id"},
        {updateText("K", "<Entry><Id>1</Id></Entry>"), "unknown column", "Id"},
        {updateText("K", "<Entry><Id>1<col>1</col></Entry>"),
         "the index is not followed by the column", "col"},
        {std::string(kHead) + "S" + reason + "drop_request</ReasonForMessage></Schema>",
         "unknown reason", "drop_request"},
        {std::string(kHead) + "S" + reason + "read_request</Schema>", "the reason does not end",
         ""},
    };
    for (const auto& test : cases) {
        EXPECT_FALSE(parse(test.text)) << test.text;
        EXPECT_EQ(m_fault.what, test.what) << test.text;
        EXPECT_EQ(m_fault.name, test.name) << test.text;
    }
}

}  // namespace
}  // namespace vireo
