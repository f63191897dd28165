#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "service/ConfigurationCheck.h"

namespace vireo {

/// One text of several pieces.
inline std::string joined(std::initializer_list<std::string_view> pieces) {
    std::string text;
    for (const std::string_view piece : pieces) {
        text.append(piece);
    }
    return text;
}

/// Reports findings about one document.
class DocumentFindings {
public:
    /// Both are not owned and outlive this.
    DocumentFindings(ConfigurationFindings& findings, std::string_view where)
        : m_findings(findings), m_where(where) {}

    void error(std::initializer_list<std::string_view> what, std::string_view remedy) const {
        report(ConfigurationFinding::Severity::eError, what, remedy);
    }
    void warning(std::initializer_list<std::string_view> what, std::string_view remedy) const {
        report(ConfigurationFinding::Severity::eWarning, what, remedy);
    }

private:
    void report(ConfigurationFinding::Severity severity,
                std::initializer_list<std::string_view> what, std::string_view remedy) const {
        const std::string text = joined(what);
        m_findings.report({severity, m_where, text, remedy});
    }

    ConfigurationFindings& m_findings;
    std::string_view m_where;
};

}  // namespace vireo
