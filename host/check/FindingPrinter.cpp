#include "check/FindingPrinter.h"

#include <algorithm>
#include <string>

#include "log/Log.h"

namespace vireo {
namespace {

using Severity = ConfigurationFinding::Severity;

/// How to mend what the loading warns of, by a part of its text.
struct LoadingRemedy {
    std::string_view part;
    std::string_view remedy;
};

constexpr LoadingRemedy kLoadingRemedies[] = {
    {"import of ", "mend the file, or take its import out"},
    {"the name is taken", "give one of the two another name, or take it out"},
    {"the name is reserved", "give the item another tag: a configuration document has this name"},
    {"not an item name", "a tag has letters, digits, '.', '_' and '-', and starts with a letter"},
};

/// Lines of the loading about what the check itself names, with every place.
bool isFoundByCheck(std::string_view text) {
    return text.find("it lacks an element") != std::string_view::npos ||
           text.find("unknown schema") != std::string_view::npos;
}

std::string_view loadingRemedy(std::string_view text) {
    for (const LoadingRemedy& known : kLoadingRemedies) {
        if (text.find(known.part) != std::string_view::npos) {
            return known.remedy;
        }
    }
    return "see the documentation of the configuration files";
}

}  // namespace

void FindingPrinter::report(const ConfigurationFinding& finding) {
    print(finding.severity, finding.where, finding.what, finding.remedy);
}

void FindingPrinter::write(std::string_view /*component*/, std::string_view /*file*/, int level,
                           int /*line*/, std::string_view text) noexcept {
    if (level > kLogWarning || isFoundByCheck(text)) {
        return;
    }
    constexpr std::string_view kPrefix = "VCMS - ";
    if (text.starts_with(kPrefix)) {
        text.remove_prefix(kPrefix.size());
    }
    // A warning too: something of the configuration is left out.
    print(Severity::eError, "loading", text, loadingRemedy(text));
}

void FindingPrinter::print(Severity severity, std::string_view where, std::string_view what,
                           std::string_view remedy) {
    const bool isError = severity == Severity::eError;
    ++(isError ? m_errors : m_warnings);
    std::string line(isError ? "error: " : "warning: ");
    line.append(where).append(": ").append(what).append("; ").append(remedy);
    // Texts from the files may have line ends; a finding is one line.
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < ' '; }, ' ');
    std::fprintf(m_output, "%s\n", line.c_str());
}

void FindingPrinter::printSummary(const ConfigurationSize& size) const {
    std::fprintf(m_output, "%zu items of %zu owners, %zu collections: %zu errors, %zu warnings\n",
                 size.items, size.owners, size.collections, m_errors, m_warnings);
}

}  // namespace vireo
