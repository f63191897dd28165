#include "harness/Report.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <utility>

#include "harness/Failure.h"

namespace vireo::bench {
namespace {

std::string number(double value, const std::string& unit) {
    char text[32];
    const int decimals = value >= 100 ? 0 : value >= 10 ? 1 : 2;
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return std::string(text) + (unit == "x" ? "" : " " + unit);
}

void printLine(const char* measured, const char* against, const char* value, const char* spread,
               const char* goal, const char* met) {
    std::printf("%-46s %-36s %11s %13s %9s  %s\n", measured, against, value, spread, goal, met);
    std::fflush(stdout);
}

}  // namespace

bool Goal::isMet(double value) const {
    switch (kind) {
        case Kind::eAtMost:
            return value <= bound;
        case Kind::eAtLeast:
            return value >= bound;
        case Kind::eNone:
            break;
    }
    return true;
}

std::string Goal::text() const {
    switch (kind) {
        case Kind::eAtMost:
            return "<= " + number(bound, "x");
        case Kind::eAtLeast:
            return ">= " + number(bound, "x");
        case Kind::eNone:
            break;
    }
    return "";
}

void Report::printHead() const {
    std::printf(
        "Goals with <= : time, or memory, of the measured to that of the rival.\n"
        "Goals with >= : how many times faster the measured is.\n\n");
    printLine("measured", "against", "ratio", "quartiles", "goal", "");
}

void Report::add(Row row) {
    const std::string spread = row.rounds > 1 ? number(row.value.lowerQuartile, "x") + "-" +
                                                    number(row.value.upperQuartile, "x")
                                              : "";
    printLine(row.measured.c_str(), row.against.c_str(), number(row.value.median, row.unit).c_str(),
              spread.c_str(), row.goal.text().c_str(),
              row.goal.kind == Goal::Kind::eNone ? ""
              : row.goal.isMet(row.value.median) ? "met"
                                                 : "MISSED");
    m_rows.push_back(std::move(row));
}

void Report::add(std::string measured, std::string against, const Comparison& comparison,
                 std::size_t own, std::size_t rival, Goal goal) {
    Row row;
    row.measured = std::move(measured);
    row.against = std::move(against);
    row.value = comparison.ratio(own, rival);
    if (goal.kind == Goal::Kind::eAtLeast) {
        row.value = inverse(row.value);
    }
    row.goal = goal;
    row.rounds = comparison.rounds();
    add(std::move(row));
}

void Report::addFailure(std::string measured, std::string what) {
    Row row;
    row.measured = std::move(measured);
    row.failure = std::move(what);
    std::printf("%-46s FAILED: %s\n", row.measured.c_str(), row.failure.c_str());
    std::fflush(stdout);
    m_rows.push_back(std::move(row));
}

bool Report::printSummary() const {
    const auto count = [this](auto&& holds) {
        return static_cast<long>(std::count_if(m_rows.begin(), m_rows.end(), holds));
    };
    const auto hasGoal = [](const Row& row) {
        return row.failure.empty() && row.goal.kind != Goal::Kind::eNone;
    };
    const long failed = count([](const Row& row) { return !row.failure.empty(); });
    const long goals = count(hasGoal);
    const long met =
        count([&](const Row& row) { return hasGoal(row) && row.goal.isMet(row.value.median); });
    std::printf("\n%ld of %ld goals met", met, goals);
    if (failed > 0) {
        std::printf(", %ld measurements failed", failed);
    }
    std::printf("\n");
    return failed == 0;
}

void Report::writeJson(const std::string& path, const std::string& mode) const {
    nlohmann::json rows = nlohmann::json::array();
    for (const Row& row : m_rows) {
        nlohmann::json entry{{"measured", row.measured}, {"against", row.against}};
        if (!row.failure.empty()) {
            entry["failure"] = row.failure;
        } else {
            entry["value"] = row.value.median;
            entry["unit"] = row.unit;
            entry["quartiles"] = {row.value.lowerQuartile, row.value.upperQuartile};
            entry["rounds"] = row.rounds;
        }
        if (row.goal.kind != Goal::Kind::eNone) {
            entry["goal"] = {
                {row.goal.kind == Goal::Kind::eAtMost ? "atMost" : "atLeast", row.goal.bound}};
            entry["met"] = row.failure.empty() && row.goal.isMet(row.value.median);
        }
        rows.push_back(std::move(entry));
    }
    std::ofstream file(path);
    file << nlohmann::json{{"mode", mode}, {"rows", rows}}.dump(2) << '\n';
    require(static_cast<bool>(file.flush()), "cannot write the report");
}

}  // namespace vireo::bench
