#pragma once

#include <ostream>
#include <string>

namespace vireo {

/// How far something is: on a terminal a bar that moves, elsewhere a line for each change.
class ProgressLine {
public:
    /// `out` is not owned and outlives this.
    ProgressLine(std::ostream& out, bool isTerminal) : m_out(out), m_isTerminal(isTerminal) {}

    /// Percent of `what`; with an `activity` of that, such as "burning".
    void show(const std::string& what, const std::string& activity, int percent);
    /// Takes the bar away, so that something else can be written.
    void end();

private:
    std::ostream& m_out;
    const bool m_isTerminal;
    bool m_isDrawn = false;
};

}  // namespace vireo
