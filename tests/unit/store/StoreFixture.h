#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Ports.h"
#include "log/Log.h"
#include "store/SqliteDataAccess.h"

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
class StoreFixture : public ::testing::Test, public LogPort {
protected:
    static constexpr const char* kCatalogue =
        R"(<store>
             <table name="PhoneSettings">
               <column name="RingerMelody"/><column name="SipServer" reboot="true"/>
               <column name="other"/>
             </table>
             <table name="KeyTable" index="KeyIndex">
               <column name="Label"/><column name="Number"/>
             </table>
           </store>)";

    void SetUp() override {
        std::string pattern = ::testing::TempDir() + "/storeXXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        m_directory = pattern;
        m_path = pattern + "/data/phone.db";
        installPorts({this, nullptr});
        open();
    }

    void TearDown() override {
        m_store.reset();
        installPorts({});
        std::filesystem::remove_all(m_directory);
    }

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

    bool hasLogged(int level, std::string_view text) {
        const std::lock_guard lock(m_logMutex);
        for (const auto& [lineLevel, line] : m_lines) {
            if (lineLevel == level && line.find(text) != std::string::npos) {
                return true;
            }
        }
        return false;
    }

    std::string m_directory;
    std::string m_path;
    std::unique_ptr<SqliteDataAccess> m_store;

private:
    void write(std::string_view component, std::string_view /*file*/, int level, int /*line*/,
               std::string_view text) noexcept override {
        const std::lock_guard lock(m_logMutex);
        if (component == "DataAccessService") {
            m_lines.emplace_back(level, text);
        }
    }

    static bool isUpdated(const std::string& answer) {
        return answer.find("<ReasonForMessage>update_response</") != std::string::npos;
    }

    static std::optional<std::string> valueIn(const std::string& answer, std::string_view column) {
        EXPECT_NE(answer.find("<ReasonForMessage>read_response</"), std::string::npos) << answer;
        const std::size_t start = answer.find("<" + std::string(column) + ">");
        if (start == std::string::npos) {
            return std::nullopt;
        }
        const std::size_t from = start + column.size() + 2;
        const std::size_t end = answer.find('<', from);
        EXPECT_EQ(answer.substr(end), "</" + std::string(column) + "></Schema>");
        return unescaped(answer.substr(from, end - from));
    }

    static std::string unescaped(const std::string& text) {
        static constexpr std::pair<std::string_view, char> kReferences[] = {
            {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&#13;", '\r'}};
        EXPECT_EQ(text.find('\r'), std::string::npos) << "would be read as a line feed";
        std::string result;
        for (std::size_t at = 0; at < text.size();) {
            if (text[at] != '&') {
                result += text[at++];
                continue;
            }
            const std::size_t before = at;
            for (const auto& [reference, character] : kReferences) {
                if (text.compare(at, reference.size(), reference) == 0) {
                    result += character;
                    at += reference.size();
                    break;
                }
            }
            if (at == before) {
                ADD_FAILURE() << "bare & in an answer";
                break;
            }
        }
        return result;
    }

    std::mutex m_logMutex;
    std::vector<std::pair<int, std::string>> m_lines;
};

}  // namespace vireo
