#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>

#include "Ports.h"
#include "service/ConfigurationCheck.h"

namespace vireo {

/// Prints one line per finding and counts them. While it is the log port, what the loading of
/// configuration files warns of becomes a finding as well. Used by one thread.
class FindingPrinter : public ConfigurationFindings, public LogPort {
public:
    /// `output` is not owned.
    explicit FindingPrinter(std::FILE* output) : m_output(output) {}

    void report(const ConfigurationFinding& finding) override;
    void write(std::string_view component, std::string_view file, int level, int line,
               std::string_view text) noexcept override;

    /// The last line.
    void printSummary(const ConfigurationSize& size) const;
    std::size_t errors() const { return m_errors; }

private:
    void print(ConfigurationFinding::Severity severity, std::string_view where,
               std::string_view what, std::string_view remedy);

    std::FILE* m_output;
    std::size_t m_errors = 0;
    std::size_t m_warnings = 0;
};

}  // namespace vireo
