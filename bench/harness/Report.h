#pragma once

#include <optional>
#include <string>
#include <vector>

#include "harness/Comparison.h"

namespace vireo::bench {

/// What a row is to reach.
struct Goal {
    enum class Kind { eNone, eAtMost, eAtLeast };
    Kind kind = Kind::eNone;
    double bound = 0;

    static Goal none() { return {}; }
    static Goal atMost(double bound) { return {Kind::eAtMost, bound}; }
    static Goal atLeast(double bound) { return {Kind::eAtLeast, bound}; }
    bool isMet(double value) const;
    std::string text() const;
};

/// One line of the page.
struct Row {
    std::string measured;
    std::string against;
    Ratio value;  ///< "at most": its time to the rival's; "at least": how many times faster it is
    Goal goal;
    std::string unit = "x";
    unsigned rounds = 0;
    std::string failure;  ///< why there is no value
};

/// The page of ratios, printed line by line, and its form for machines.
class Report {
public:
    void printHead() const;
    /// Prints the row and keeps it.
    void add(Row row);
    /// From the contenders of a comparison, by the direction of the goal.
    void add(std::string measured, std::string against, const Comparison& comparison,
             std::size_t own, std::size_t rival, Goal goal);
    void addFailure(std::string measured, std::string what);
    /// Prints how many goals were met. True when everything was measured.
    bool printSummary() const;
    /// Throws when the file cannot be written.
    void writeJson(const std::string& path, const std::string& mode) const;

private:
    std::vector<Row> m_rows;
};

}  // namespace vireo::bench
