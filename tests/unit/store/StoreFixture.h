#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "service/ClientUtils.h"
#include "store/SqliteDataAccess.h"
#include "support/TemporaryDirectory.h"
#include "support/TestPorts.h"

namespace vireo {

inline constexpr std::string_view kHead = R"(<?xml version="1.0" encoding="utf-8"?><Schema name=")";

inline std::string readText(std::string_view table, std::string_view column,
                            std::string_view entry = "") {
    return std::string(kHead)
        .append(table)
        .append("\"><ReasonForMessage>read_request</ReasonForMessage><ResultCols>")
        .append(column)
        .append("</ResultCols>")
        .append(entry)
        .append("</Schema>");
}

inline std::string updateText(std::string_view table, std::string_view content) {
    return std::string(kHead)
        .append(table)
        .append("\"><ReasonForMessage>update_request</ReasonForMessage>")
        .append(content)
        .append("</Schema>");
}

inline std::string element(std::string_view name, std::string_view text) {
    return std::string("<").append(name).append(">").append(text).append("</").append(name).append(
        ">");
}

/// A store of the catalogue below in a directory of its own.
class StoreFixture : public ::testing::Test {
protected:
    static constexpr const char* kCatalogue =
        R"(<?xml version="1.0"?><!-- the phone -->
           <store>
             <table name="PhoneSettings">
               <column name="RingerMelody" reboot="false"/><column name="SipServer" reboot="true"/>
               <column name="other"/><column name="_b-2.c"/>
             </table>
             <table name="KeyTable" index="KeyIndex">
               <column name="Label"/><column name="Number"/>
             </table>
           </store>)";

    void SetUp() override { open(); }

    static StoreCatalogue catalogue(std::string_view xml = kCatalogue) {
        std::string error;
        auto parsed = StoreCatalogue::parse(xml, error);
        EXPECT_TRUE(parsed) << error;
        return std::move(parsed).value();
    }

    void open() {
        m_store.reset();
        std::string error;
        m_store = SqliteDataAccess::open(m_path, catalogue(), error);
        ASSERT_NE(m_store, nullptr) << error;
    }

    std::string openError(const std::string& path, std::string_view xml = kCatalogue) {
        std::string error;
        EXPECT_EQ(SqliteDataAccess::open(path, catalogue(xml), error), nullptr);
        return error;
    }

    bool update(std::string_view column, std::string_view value) {
        return isUpdated(m_store->request(updateText("PhoneSettings", element(column, value))));
    }

    bool updateKey(std::string_view key, std::string_view column, std::string_view value) {
        const std::string entry = element("KeyIndex", key) + element(column, value);
        return isUpdated(m_store->request(updateText("KeyTable", element("Entry", entry))));
    }

    std::optional<std::string> read(std::string_view column) {
        return valueIn(m_store->request(readText("PhoneSettings", column)), column);
    }

    std::optional<std::string> readKey(std::string_view key, std::string_view column) {
        const std::string entry = element("Entry", element("KeyIndex", key));
        return valueIn(m_store->request(readText("KeyTable", column, entry)), column);
    }

    /// Executes SQL through another connection, as another program would; answers the first value.
    static std::optional<std::string> sql(const std::string& path, const std::string& text) {
        sqlite3* database = nullptr;
        EXPECT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
        sqlite3_stmt* statement = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(database, text.c_str(), -1, &statement, nullptr), SQLITE_OK)
            << sqlite3_errmsg(database);
        std::optional<std::string> result;
        const int step = sqlite3_step(statement);
        if (step == SQLITE_ROW && sqlite3_column_type(statement, 0) != SQLITE_NULL) {
            const void* bytes = sqlite3_column_blob(statement, 0);
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, 0));
            result = size == 0 ? "" : std::string(static_cast<const char*>(bytes), size);
        }
        EXPECT_TRUE(step == SQLITE_ROW || step == SQLITE_DONE) << sqlite3_errmsg(database);
        sqlite3_finalize(statement);
        sqlite3_close(database);
        return result;
    }
    std::optional<std::string> sql(const std::string& text) const { return sql(m_path, text); }

    bool hasLogged(int level, std::string_view text) const {
        return m_ports.count(level, text) > 0;
    }

    test::TestPorts m_ports{kLogWarning};
    test::TemporaryDirectory m_directory;
    std::string m_path = m_directory.file("data/phone.db");
    std::unique_ptr<SqliteDataAccess> m_store;

private:
    static bool isUpdated(const std::string& answer) {
        return answer.find("<ReasonForMessage>update_response</") != std::string::npos;
    }

    static std::optional<std::string> valueIn(const std::string& answer, std::string_view column) {
        EXPECT_NE(answer.find("<ReasonForMessage>read_response</"), std::string::npos) << answer;
        EXPECT_EQ(answer.find('\r'), std::string::npos) << "would be read as a line feed";
        const std::string name(column);
        if (answer.find('<' + name + '>') == std::string::npos) {
            return std::nullopt;
        }
        EXPECT_TRUE(answer.ends_with("</" + name + "></Schema>")) << answer;
        return ClientUtils::extractValueFromXMLString(answer, name);
    }
};

}  // namespace vireo
