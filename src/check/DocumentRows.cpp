#include "check/DocumentRows.h"

#include <algorithm>
#include <string_view>

namespace vireo {
namespace {

bool isColumn(const RowForm& form, std::string_view name) {
    return std::find(form.columns.begin(), form.columns.end(), name) != form.columns.end();
}

void reportForeignElements(const DxlNode& row, const RowForm& form,
                           const DocumentFindings& findings) {
    for (const DxlNode::Pointer& child : row.children()) {
        if (child->kind() != DxlNode::Kind::eText && !isColumn(form, child->getName())) {
            findings.error(
                {"<", form.row, "> has an element <", child->getName(), ">, which nobody reads"},
                "correct its name, or take it out");
        }
    }
}

/// The row's texts; nothing when one that it needs is missing.
std::optional<RowTexts> readRow(const DxlNode& row, const RowForm& form,
                                const DocumentFindings& findings) {
    RowTexts texts(form.columns.size());
    bool isComplete = true;
    for (std::size_t i = 0; i < form.columns.size(); ++i) {
        const char* column = form.columns[i];
        std::size_t count = 0;
        row.forEachChild(column, [&](const DxlNode&) { ++count; });
        if (count > 1) {
            findings.error({"<", column, "> twice in one <", form.row,
                            ">: the rows behind it are read out of step"},
                           "take one of them out");
        }
        if (const DxlNode* found = row.child(column)) {
            texts[i] = found->value();
        } else if (i < form.needed) {
            const std::string first = texts[0].value_or("");
            findings.error({"a <", form.row, "> without <", column, "> is skipped",
                            first.empty() ? "" : ": ", first},
                           "add the element, or take the row out");
            isComplete = false;
        }
    }
    return isComplete ? std::optional(std::move(texts)) : std::nullopt;
}

void walk(const DxlDocument& document, const RowForm& form, const DocumentFindings& findings,
          const std::function<void(const RowTexts&)>& visit) {
    const RowForm top{document.getName().c_str(), std::span(&form.row, 1), 0};
    reportForeignElements(*document.root(), top, findings);
    document.root()->forEachChild(form.row, [&](const DxlNode& row) {
        reportForeignElements(row, form, findings);
        if (const auto texts = readRow(row, form, findings)) {
            visit(*texts);
        }
    });
}

}  // namespace

void DocumentRows::forEach(const std::string& document, const RowForm& form,
                           std::string_view wantedBy,
                           const std::function<void(const RowTexts&)>& visit) const {
    if (const auto found = m_documents.getDocument(document)) {
        walk(*found, form, of(document), visit);
    } else {
        of(wantedBy).error({"there is no document \"", document, "\""},
                           "correct the name, or import the file that has the document");
    }
}

void DocumentRows::forEachIfThere(const std::string& document, const RowForm& form,
                                  const std::function<void(const RowTexts&)>& visit) const {
    if (const auto found = m_documents.getDocument(document)) {
        walk(*found, form, of(document), visit);
    }
}

}  // namespace vireo
