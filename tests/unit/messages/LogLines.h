#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Ports.h"

namespace vireo::test {

/// Keeps the log lines of a test. Installed as long as it lives.
class LogLines : public LogPort {
public:
    LogLines() { installPorts({.log = this, .config = nullptr}); }
    ~LogLines() override { installPorts({}); }

    void write(std::string_view /*component*/, std::string_view /*file*/, int level, int /*line*/,
               std::string_view text) noexcept override {
        const std::lock_guard lock(m_mutex);
        m_lines.push_back({level, std::string(text)});
    }

    /// How many lines of `level` hold `part`.
    int count(int level, std::string_view part) const {
        const std::lock_guard lock(m_mutex);
        int found = 0;
        for (const Line& line : m_lines) {
            found += line.level == level && line.text.find(part) != std::string::npos ? 1 : 0;
        }
        return found;
    }

private:
    struct Line {
        int level;
        std::string text;
    };

    mutable std::mutex m_mutex;
    std::vector<Line> m_lines;
};

}  // namespace vireo::test
