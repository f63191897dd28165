#pragma once

#include <algorithm>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Ports.h"
#include "log/Log.h"

namespace vireo::test {

/// Installs ports for one test: configuration files from texts, log lines into memory.
class TestPorts : public LogPort, public ConfigPort {
public:
    explicit TestPorts(int level = kLogDump) {
        installPorts({this, this});
        setLogLevel(level);
    }
    ~TestPorts() override {
        installPorts({});
        setLogLevel(0);
    }

    std::map<std::string, std::string> files;

    void write(std::string_view /*component*/, std::string_view /*file*/, int level, int /*line*/,
               std::string_view text) noexcept override {
        const std::lock_guard lock(m_mutex);
        m_lines.push_back({level, std::string(text)});
    }

    bool readConfigFile(const std::string& name, std::string& content,
                        std::string& error) override {
        const auto found = files.find(name);
        if (found == files.end()) {
            error = "no such file";
            return false;
        }
        content = found->second;
        return true;
    }

    /// How many lines of `level` contain `part`.
    long count(int level, std::string_view part) const {
        const std::lock_guard lock(m_mutex);
        return std::count_if(m_lines.begin(), m_lines.end(), [&](const Line& line) {
            return line.level == level && line.text.find(part) != std::string::npos;
        });
    }
    /// The lines of `level`, in order.
    std::vector<std::string> lines(int level) const {
        const std::lock_guard lock(m_mutex);
        std::vector<std::string> texts;
        for (const Line& line : m_lines) {
            if (line.level == level) {
                texts.push_back(line.text);
            }
        }
        return texts;
    }
    void forgetLines() {
        const std::lock_guard lock(m_mutex);
        m_lines.clear();
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
