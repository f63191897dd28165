#include <thread>

#include "StoreFixture.h"
#include "support/FullDisk.h"

namespace vireo {
namespace {

using test::FullDisk;

class SqliteDataAccessBracketTest : public StoreFixture {
protected:
    void SetUp() override {
        StoreFixture::SetUp();
        ASSERT_TRUE(update("RingerMelody", "old") && update("other", "old") &&
                    updateKey("1", "Label", "old"));
    }

    // What another process sees is what has been committed.
    std::string committed() {
        return sql("SELECT RingerMelody||','||other||','||Label FROM PhoneSettings, KeyTable "
                   "WHERE KeyIndex='1'")
            .value_or("");
    }

    std::string readable() {
        return *read("RingerMelody") + "," + *read("other") + "," + *readKey("1", "Label");
    }

    template <typename Work>
    static void onAnotherThread(Work work) {
        std::thread(work).join();
    }
};

TEST_F(SqliteDataAccessBracketTest, UpdatesReachTheFileTogetherAndReadsSeeThemAtOnce) {
    m_store->beginUpdate();
    ASSERT_TRUE(update("RingerMelody", "new") && update("other", "new"));
    EXPECT_EQ(readable(), "new,new,old");
    EXPECT_EQ(committed(), "old,old,old");
    ASSERT_TRUE(updateKey("1", "Label", "new") && m_store->commitUpdate());
    EXPECT_EQ(committed(), "new,new,new");
    ASSERT_TRUE(update("other", "newer"));
    EXPECT_EQ(committed(), "new,newer,new") << "outside a bracket again";
}

TEST_F(SqliteDataAccessBracketTest, AnInnerCommitMakesAllDurableAndTheBracketGoesOn) {
    m_store->beginUpdate();
    ASSERT_TRUE(update("RingerMelody", "new"));
    m_store->beginUpdate();
    ASSERT_TRUE(update("other", "new"));
    EXPECT_TRUE(m_store->commitUpdate());
    EXPECT_EQ(committed(), "new,new,old");
    ASSERT_TRUE(updateKey("1", "Label", "new"));
    EXPECT_EQ(committed(), "new,new,old");
    EXPECT_TRUE(m_store->commitUpdate());
    EXPECT_EQ(committed(), "new,new,new");
}

TEST_F(SqliteDataAccessBracketTest, WhatAnotherThreadCommitsTakesPendingUpdatesAlong) {
    m_store->beginUpdate();
    ASSERT_TRUE(update("RingerMelody", "new"));
    onAnotherThread([&] {
        EXPECT_TRUE(update("other", "new"));
        EXPECT_EQ(committed(), "new,new,old") << "an update outside any bracket";
    });
    ASSERT_TRUE(update("other", "newer"));
    onAnotherThread([&] {
        EXPECT_TRUE(update("other", "newer"));
        EXPECT_EQ(committed(), "new,newer,old") << "the value that is only pending";
    });
    ASSERT_TRUE(updateKey("1", "Label", "new"));
    onAnotherThread([&] {
        m_store->beginUpdate();
        EXPECT_TRUE(m_store->commitUpdate());
        EXPECT_EQ(committed(), "new,newer,new");
    });
    EXPECT_TRUE(m_store->commitUpdate());
}

TEST_F(SqliteDataAccessBracketTest, AFailedCommitTakesBackEverythingThatWasPending) {
    m_store->beginUpdate();
    ASSERT_TRUE(update("RingerMelody", "new") && update("RingerMelody", "newer"));
    ASSERT_TRUE(updateKey("1", "Label", "new") && updateKey("2", "Label", "new"));
    ASSERT_TRUE(update("SipServer", "new"));
    bool isCommitted = true;
    {
        const FullDisk fullDisk;
        isCommitted = m_store->commitUpdate();
    }
    EXPECT_FALSE(isCommitted);
    EXPECT_TRUE(hasLogged(kLogError, "STORE NOT WRITTEN: "));
    EXPECT_EQ(readable(), "old,old,old");
    EXPECT_EQ(committed(), "old,old,old");
    EXPECT_EQ(readKey("2", "Label"), std::nullopt);
    EXPECT_EQ(read("SipServer"), std::nullopt);
    EXPECT_FALSE(m_store->isRebootRequired());

    m_store->beginUpdate();
    ASSERT_TRUE(update("RingerMelody", "later") && m_store->commitUpdate());
    open();
    EXPECT_EQ(readable(), "later,old,old");
    EXPECT_EQ(readKey("2", "Label"), std::nullopt);
}

TEST_F(SqliteDataAccessBracketTest, AnUpdateOutsideABracketThatCannotBeMadeDurableIsRefused) {
    std::string answer;
    {
        const FullDisk fullDisk;
        answer = m_store->request(updateText("PhoneSettings", element("other", "new")));
    }
    EXPECT_NE(answer.find("cannot commit: "), std::string::npos) << answer;
    EXPECT_EQ(readable(), "old,old,old");
    EXPECT_TRUE(update("other", "new"));
    EXPECT_EQ(committed(), "old,new,old");
}

TEST_F(SqliteDataAccessBracketTest, ABracketThatLostAnUpdateToAnotherThreadSaysSoToItsEnd) {
    m_store->beginUpdate();
    m_store->beginUpdate();
    ASSERT_TRUE(update("RingerMelody", "new"));
    bool isUpdated = true;
    onAnotherThread([&] {
        const FullDisk fullDisk;
        isUpdated = update("other", "new");
    });
    EXPECT_FALSE(isUpdated);
    EXPECT_EQ(readable(), "old,old,old");
    EXPECT_FALSE(update("RingerMelody", "new")) << "half of a bracket is not taken";
    EXPECT_FALSE(m_store->commitUpdate());
    EXPECT_FALSE(m_store->commitUpdate());
    EXPECT_TRUE(update("RingerMelody", "new")) << "the bracket has ended";
    EXPECT_EQ(committed(), "new,old,old");
}

TEST_F(SqliteDataAccessBracketTest, WhatTheFileDoesNotTakeFailsTheCommitAsAWhole) {
    for (const char* how : {"ABORT", "ROLLBACK"}) {
        sql((std::string("CREATE TRIGGER t BEFORE UPDATE OF other ON PhoneSettings BEGIN SELECT "
                         "RAISE(") +
             how + ",'no'); END")
                .c_str());
        m_store->beginUpdate();
        EXPECT_TRUE(update("RingerMelody", "new") && update("other", "new") &&
                    updateKey("1", "Label", "new"));
        EXPECT_FALSE(m_store->commitUpdate()) << how;
        EXPECT_EQ(readable(), "old,old,old");
        EXPECT_EQ(committed(), "old,old,old");
        sql("DROP TRIGGER t");
    }
    EXPECT_TRUE(update("other", "new"));
}

TEST_F(SqliteDataAccessBracketTest, RowsAreWrittenWithWhateverColumnsChanged) {
    const auto key = [](int number) { return std::to_string(number % 5); };
    for (int round = 0; round < 32; ++round) {
        m_store->beginUpdate();
        const std::string value = std::to_string(round);
        for (int row = 0; row < 5; ++row) {
            if ((round >> row) % 2 == 1) {
                ASSERT_TRUE(updateKey(key(row), "Label", value + "a"));
                ASSERT_TRUE(updateKey(key(row), round % 3 == 0 ? "Number" : "Label", value));
            }
        }
        ASSERT_TRUE(update(round % 2 == 0 ? "other" : "RingerMelody", value));
        ASSERT_TRUE(m_store->commitUpdate());
    }
    const auto everything = [this] {
        std::string all = *read("RingerMelody") + *read("other");
        for (const char* row : {"0", "1", "2", "3", "4"}) {
            all += " " + readKey(row, "Label").value_or("-") + "," +
                   readKey(row, "Number").value_or("-");
        }
        return all;
    };
    const std::string before = everything();
    EXPECT_EQ(before, "3130 31,27 31,30 31,30 31,30 31,30") << "by hand";
    open();
    EXPECT_EQ(everything(), before) << "the file has the same";
}

TEST_F(SqliteDataAccessBracketTest, WhileAnotherProgramWritesUpdatesFailAndThenGoOn) {
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(m_path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_FALSE(update("other", "new"));
    EXPECT_EQ(read("other"), "old");
    sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close(other);
    EXPECT_TRUE(update("other", "new"));
    EXPECT_EQ(committed(), "old,new,old");
}

TEST_F(SqliteDataAccessBracketTest, WhatIsPendingWhenTheStoreClosesNeverHappened) {
    m_store->beginUpdate();
    ASSERT_TRUE(update("RingerMelody", "new"));
    open();
    EXPECT_EQ(readable(), "old,old,old");
    EXPECT_TRUE(hasLogged(kLogWarning, "1 updates that were never committed"));
}

}  // namespace
}  // namespace vireo
