#include <thread>

#include "StoreFixture.h"
#include "store/SqliteDataAccess.h"

namespace vireo {
namespace {

class SqliteDataAccessTest : public StoreFixture {};

TEST_F(SqliteDataAccessTest, ValuesComeBackByteForByteAndNeighboursStay) {
    const std::string nasty[] = {"a&b",
                                 "&amp;&#65;",
                                 "<x>",
                                 "\"'",
                                 "]]>",
                                 "</RingerMelody>",
                                 "</Label>",
                                 "</RingerMelody><other>9</other>",
                                 "</Label><Number>9</Number>",
                                 "</RingerMelody></Schema>",
                                 "</Label></Entry></Schema>",
                                 "</KeyIndex><Label>",
                                 "</KeyIndex><Number>",
                                 "</Entry>",
                                 "</ResultCols>",
                                 "</",
                                 "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80",
                                 std::string(64 << 10, '<') + "end",
                                 "  leading and trailing ",
                                 " ",
                                 "\r\n\tx\r",
                                 "007",
                                 "'; DROP TABLE KeyTable; --",
                                 ""};
    ASSERT_TRUE(update("other", "neighbour") && updateKey("2", "Label", "neighbour") &&
                updateKey("1", "Number", "neighbour"));
    EXPECT_EQ(readKey("2", "Number"), std::nullopt) << "a row, but no value";
    std::string key;
    const auto expectStored = [&](const std::string& value) {
        EXPECT_EQ(read("RingerMelody"), value);
        EXPECT_EQ(readKey("1", "Label"), value);
        EXPECT_EQ(readKey(key, "Number"), value);
        EXPECT_EQ(read("other"), "neighbour");
        EXPECT_EQ(readKey("2", "Label"), "neighbour");
        EXPECT_EQ(readKey("1", "Number"), "neighbour");
    };
    for (const std::string& value : nasty) {
        SCOPED_TRACE(value.substr(0, 40));
        ASSERT_TRUE(update("RingerMelody", value));
        ASSERT_TRUE(updateKey("1", "Label", value));
        // The one thing that a key of an update cannot contain is the start of its column.
        key = value == "</KeyIndex><Number>" ? "key" : value;
        ASSERT_TRUE(updateKey(key, "Number", value));
        expectStored(value);
        EXPECT_EQ(sql("SELECT RingerMelody FROM PhoneSettings"), value);
        EXPECT_EQ(sql("SELECT Label FROM KeyTable WHERE KeyIndex='1'"), value);
        EXPECT_EQ(sql("SELECT other FROM PhoneSettings"), "neighbour");
        EXPECT_EQ(sql("SELECT group_concat(Number) FROM KeyTable WHERE KeyIndex='1'"), "neighbour");
        EXPECT_EQ(sql("SELECT Label FROM KeyTable WHERE KeyIndex='2'"), "neighbour");
        EXPECT_EQ(sql("SELECT count(*) FROM PhoneSettings"), "1");
        open();
        expectStored(value);
    }
}

TEST_F(SqliteDataAccessTest, WhatCannotBeDoneIsAnsweredWithItsReasonAndChangesNothing) {
    ASSERT_TRUE(update("RingerMelody", "old") && updateKey("1", "Label", "old"));
    const std::string control("a\x01z");
    const struct {
        std::string request;
        const char* error;
    } cases[] = {
        {updateText("PhoneSettings", element("rowid", "1")), "unknown column \"rowid\""},
        {updateText("PhoneSettings", element("RingerMelody", control)), "0x01"},
        {updateText("PhoneSettings", element("RingerMelody", "\xC3(")), "0xc3"},
        {updateText("PhoneSettings", element("RingerMelody", std::string("a\0b", 3))), "0x00"},
        {updateText("KeyTable", "<Entry><KeyIndex>1</KeyIndex><Label>\xFF</Label></Entry>"),
         "column \"Label\": "},
        {updateText("KeyTable", "<Entry><KeyIndex>\x02</KeyIndex><Label>n</Label></Entry>"),
         "index \"KeyIndex\": "},
    };
    for (const auto& test : cases) {
        const std::string answer = m_store->request(test.request);
        EXPECT_NE(answer.find("\"><ReasonForMessage>error_response</ReasonForMessage><Error>"),
                  std::string::npos)
            << answer;
        EXPECT_NE(answer.find(test.error), std::string::npos) << answer;
        EXPECT_TRUE(hasLogged(kLogWarning, test.error)) << test.error;
    }
    EXPECT_EQ(read("RingerMelody"), "old");
    EXPECT_EQ(readKey("1", "Label"), "old");
    EXPECT_EQ(sql("SELECT RingerMelody FROM PhoneSettings"), "old");
    EXPECT_EQ(sql("SELECT count(*) FROM KeyTable"), "1");
}

TEST_F(SqliteDataAccessTest, AValueOfAnotherProgramThatXmlCannotCarryIsAnErrorUntilReplaced) {
    m_store.reset();
    sql("UPDATE PhoneSettings SET RingerMelody=x'4101', other='fine'");
    open();
    EXPECT_TRUE(hasLogged(kLogWarning, "\"RingerMelody\": the value cannot be read"));
    EXPECT_NE(m_store->request(readText("PhoneSettings", "RingerMelody")).find("error_response"),
              std::string::npos);
    EXPECT_EQ(read("other"), "fine");
    ASSERT_TRUE(update("RingerMelody", "new"));
    EXPECT_EQ(read("RingerMelody"), "new");
}

TEST_F(SqliteDataAccessTest, OnlyChangedAndCommittedRebootColumnsRequireAReboot) {
    ASSERT_TRUE(update("RingerMelody", "a") && update("SipServer", "one"));
    EXPECT_TRUE(m_store->isRebootRequired());
    open();
    EXPECT_FALSE(m_store->isRebootRequired()) << "this was the reboot";
    ASSERT_TRUE(update("RingerMelody", "b") && update("SipServer", "one"));
    EXPECT_FALSE(m_store->isRebootRequired()) << "the same value again";
    m_store->beginUpdate();
    ASSERT_TRUE(update("SipServer", "two"));
    EXPECT_FALSE(m_store->isRebootRequired()) << "still pending";
    ASSERT_TRUE(update("SipServer", "one") && m_store->commitUpdate());
    EXPECT_FALSE(m_store->isRebootRequired()) << "back before the commit";
    ASSERT_TRUE(update("SipServer", "two") && update("SipServer", "one"));
    EXPECT_TRUE(m_store->isRebootRequired()) << "stays, whatever follows";
}

TEST_F(SqliteDataAccessTest, TheSameValueAgainIsNotWritten) {
    ASSERT_TRUE(update("other", "same"));
    sql("CREATE TRIGGER t BEFORE UPDATE ON PhoneSettings BEGIN SELECT RAISE(ABORT,'<w>'); END");
    EXPECT_TRUE(update("other", "same"));
    const std::string answer =
        m_store->request(updateText("PhoneSettings", element("other", "different")));
    EXPECT_NE(answer.find("cannot write: &lt;w&gt;</Error>"), std::string::npos) << answer;
    EXPECT_EQ(read("other"), "same");
    sql("DROP TRIGGER t");
    sql("DELETE FROM PhoneSettings");
    EXPECT_FALSE(update("other", "lost")) << "no row took it";
    EXPECT_EQ(read("other"), "same");
}

TEST_F(SqliteDataAccessTest, ReadersAndWritersOfManyThreadsSeeWholeValues) {
    constexpr int kRounds = 60;
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int writer = 0; writer < 3; ++writer) {
        threads.emplace_back([&, writer] {
            for (int round = 0; round < kRounds; ++round) {
                const std::string key = std::to_string(writer * 1000 + round);
                if (writer == 0) {
                    m_store->beginUpdate();
                }
                const std::string value(static_cast<std::size_t>(40 + round),
                                        static_cast<char>('a' + writer));
                failures += update("other", value) ? 0 : 1;
                failures += updateKey(key, "Label", value) ? 0 : 1;
                if (writer == 0) {
                    failures += m_store->commitUpdate() ? 0 : 1;
                }
                failures += readKey(key, "Label") == value ? 0 : 1;
            }
        });
    }
    for (int reader = 0; reader < 2; ++reader) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds * 20; ++round) {
                const std::string value = read("other").value_or("");
                failures +=
                    value.find_first_not_of(value.substr(0, 1)) == std::string::npos ? 0 : 1;
                m_store->isRebootRequired();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(sql("SELECT count(Label) FROM KeyTable"), std::to_string(3 * kRounds));
    EXPECT_EQ(sql("SELECT other FROM PhoneSettings"), read("other"));
}

}  // namespace
}  // namespace vireo
