#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "check/DocumentFindings.h"
#include "data/DxlCollection.h"

namespace vireo {

/// What the rows of a configuration document look like.
struct RowForm {
    const char* row;                       ///< the element of one row
    std::span<const char* const> columns;  ///< the elements in it, those that it needs first
    std::size_t needed;                    ///< so many
};

/// The texts of one row by column; nothing where the element is missing.
using RowTexts = std::vector<std::optional<std::string>>;

/// Walks the rows of configuration documents, and reports rows that the service would skip or read
/// otherwise than they look.
class DocumentRows {
public:
    /// Not owned; both outlive this.
    DocumentRows(const DxlCollection& documents, ConfigurationFindings& findings)
        : m_documents(documents), m_findings(findings) {}

    /// Calls `visit` for every row of the document that has all it needs. A document that is
    /// missing is reported, with `wantedBy` as the place.
    void forEach(const std::string& document, const RowForm& form, std::string_view wantedBy,
                 const std::function<void(const RowTexts&)>& visit) const;
    /// The same, but a document that is missing is fine.
    void forEachIfThere(const std::string& document, const RowForm& form,
                        const std::function<void(const RowTexts&)>& visit) const;

    DocumentFindings of(std::string_view document) const { return {m_findings, document}; }

private:
    const DxlCollection& m_documents;
    ConfigurationFindings& m_findings;
};

}  // namespace vireo
