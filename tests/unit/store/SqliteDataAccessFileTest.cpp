#include <sys/stat.h>

#include <fstream>
#include <iterator>

#include "StoreFixture.h"

namespace vireo {
namespace {

namespace fs = std::filesystem;

class SqliteDataAccessFileTest : public StoreFixture {
protected:
    static std::string bytesOf(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static void writeBytes(const std::string& path, const std::string& bytes) {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    }

    static unsigned modeOf(const std::string& path) {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }

    void expectSetAside(const std::string& name, const std::string& content) {
        EXPECT_TRUE(bytesOf(name) == content) << name;
        EXPECT_TRUE(hasLogged(kLogError, m_path)) << "names the old file";
        EXPECT_TRUE(hasLogged(kLogError, name)) << "names the new file";
        EXPECT_EQ(read("other"), std::nullopt);
        ASSERT_TRUE(update("other", "fresh"));
        EXPECT_EQ(sql("SELECT other FROM PhoneSettings"), "fresh");
    }
};

TEST_F(SqliteDataAccessFileTest, FileAndDirectoriesAreMadeForTheOwnerAlone) {
    m_path = m_directory.file("a/b/phone.db");
    open();
    ASSERT_TRUE(update("other", "x"));
    EXPECT_EQ(modeOf(m_directory.file("a")), 0700U);
    EXPECT_EQ(modeOf(m_directory.file("a/b")), 0700U);
    EXPECT_EQ(modeOf(m_path), 0600U);
    EXPECT_EQ(modeOf(m_path + "-wal"), 0600U);
}

TEST_F(SqliteDataAccessFileTest, ATruncatedDatabaseIsSetAside) {
    for (int i = 0; i < 200; ++i) {
        m_store->beginUpdate();
        ASSERT_TRUE(updateKey(std::to_string(i), "Label", std::string(500, 'l')));
    }
    ASSERT_TRUE(m_store->commitUpdate());
    m_store.reset();
    const std::string whole = bytesOf(m_path);
    ASSERT_GT(whole.size(), 50000U);
    writeBytes(m_path, whole.substr(0, whole.size() / 2 + 100));
    open();
    expectSetAside(m_path + ".damaged-1", whole.substr(0, whole.size() / 2 + 100));
    EXPECT_EQ(readKey("1", "Label"), std::nullopt);
}

TEST_F(SqliteDataAccessFileTest, ADatabaseWhoseRowsContradictItsKeysIsSetAside) {
    ASSERT_TRUE(updateKey("some key", "Label", "x"));
    m_store.reset();
    std::string bytes = bytesOf(m_path);
    const std::size_t inRow = bytes.find("some key");
    ASSERT_NE(inRow, std::string::npos);
    ASSERT_NE(bytes.find("some key", inRow + 1), std::string::npos) << "in the index as well";
    bytes.replace(inRow, 8, "none key");
    writeBytes(m_path, bytes);
    open();
    expectSetAside(m_path + ".damaged-1", bytes);
}

TEST_F(SqliteDataAccessFileTest, WhatIsNoDatabaseIsSetAsideWithItsLogUnderAFreeName) {
    ASSERT_TRUE(update("other", "only in the log"));
    const std::string soundLog = bytesOf(m_path + "-wal");
    ASSERT_FALSE(soundLog.empty());
    m_path = m_directory.file("second.db");
    const struct {
        std::optional<std::string> content;  // of the file beside the log
        std::string log;
        const char* suffix;
    } cases[] = {{std::nullopt, soundLog, ".damaged-1"},
                 {"", soundLog, ".damaged-3"},
                 {std::string(5000, 'g'), "no log", ".damaged-4"}};
    writeBytes(m_path + ".damaged-2-wal", "taken name");
    for (const auto& test : cases) {
        SCOPED_TRACE(test.suffix);
        m_store.reset();
        for (const char* part : {"", "-wal", "-shm"}) {
            fs::remove(m_path + part);
        }
        if (test.content) {
            writeBytes(m_path, *test.content);
        }
        writeBytes(m_path + "-wal", test.log);
        open();
        EXPECT_TRUE(bytesOf(m_path + test.suffix + "-wal") == test.log);
        expectSetAside(m_path + test.suffix, test.content.value_or(""));
    }
    EXPECT_FALSE(fs::exists(m_path + ".damaged-2"));
}

TEST_F(SqliteDataAccessFileTest, WhatCannotBeOpenedIsAnErrorAndStaysWhereItIs) {
    fs::create_directory(m_directory.file("folder"));
    writeBytes(m_directory.file("plain"), "text");
    EXPECT_EQ(openError(m_directory.file("folder")),
              m_directory.file("folder") + " is not an ordinary file");
    EXPECT_TRUE(fs::is_directory(m_directory.file("folder")));
    EXPECT_NE(openError(m_directory.file("plain/phone.db")).find("Not a directory"),
              std::string::npos);
    EXPECT_EQ(bytesOf(m_directory.file("plain")), "text");
    EXPECT_EQ(openError(""), "the store has no path");

    m_store.reset();
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(m_path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "PRAGMA locking_mode=EXCLUSIVE; BEGIN IMMEDIATE", nullptr,
                           nullptr, nullptr),
              SQLITE_OK);
    EXPECT_NE(openError(m_path).find("locked"), std::string::npos);
    sqlite3_close(other);
    EXPECT_FALSE(fs::exists(m_path + ".damaged-1")) << "in use is not damaged";
}

TEST_F(SqliteDataAccessFileTest, NewTablesAndColumnsAreAddedAndForgottenOnesLeftAlone) {
    ASSERT_TRUE(update("RingerMelody", "kept") && update("other", "kept"));
    m_store.reset();
    std::string error;
    m_store = SqliteDataAccess::open(
        m_path, catalogue(R"(<store><table name="PhoneSettings"><column name="other"/>
                     <column name="Added"/></table>
                     <table name="NewTable" index="rowid"><column name="New"/></table></store>)"),
        error);
    ASSERT_NE(m_store, nullptr) << error;
    EXPECT_EQ(read("other"), "kept");
    EXPECT_EQ(read("Added"), std::nullopt);
    EXPECT_TRUE(update("Added", "1"));
    EXPECT_EQ(sql("SELECT Added FROM PhoneSettings"), "1");
    open();
    EXPECT_EQ(read("RingerMelody"), "kept");
}

TEST_F(SqliteDataAccessFileTest, ATableOfAnotherShapeIsAnErrorAndTheFileStaysAsItIs) {
    m_store.reset();
    sql("CREATE TABLE Numbers(\"Value\" INTEGER)");
    sql("CREATE TABLE Rows(\"a\" TEXT)");
    sql("INSERT INTO Rows VALUES('1'),('2')");
    sql("CREATE TABLE Keyed(\"Id\" INTEGER PRIMARY KEY, \"a\" TEXT)");
    const struct {
        const char* table;
        const char* error;
    } cases[] = {
        {R"(<table name="KeyTable"><column name="Label"/></table>)",
         "table \"KeyTable\": the file has it with index \"KeyIndex\", the catalogue with \"\""},
        {R"(<table name="KeyTable" index="Label"><column name="x"/></table>)",
         "the file has it with index \"KeyIndex\", the catalogue with \"Label\""},
        {R"(<table name="PhoneSettings" index="other"><column name="RingerMelody"/></table>)",
         "the file has it with index \"\", the catalogue with \"other\""},
        {R"(<table name="Numbers"><column name="value"/></table>)", "type \"INTEGER\" instead"},
        {R"(<table name="Keyed" index="Id"><column name="a"/></table>)", "type \"INTEGER\" ins"},
        {R"(<table name="Rows"><column name="a"/></table>)", "the file has 2 rows"},
    };
    for (const auto& test : cases) {
        const std::string xml = R"(<store><table name="Before"><column name="a"/></table>)" +
                                std::string(test.table) + "</store>";
        const std::string error = openError(m_path, xml);
        EXPECT_NE(error.find(test.error), std::string::npos) << error;
        EXPECT_EQ(sql("SELECT count(*) FROM sqlite_schema WHERE name='Before'"), "0");
    }
    EXPECT_FALSE(fs::exists(m_path + ".damaged-1"));
}

}  // namespace
}  // namespace vireo
