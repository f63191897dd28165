#include "check/CallFailingCheck.h"

#include <set>
#include <string_view>

namespace vireo {
namespace {

constexpr const char* kList = "CallFailingVcmsItems";
constexpr const char* kColumns[] = {"rootId"};

/// Items that the service itself writes at any time, and so during a call.
bool isWrittenByTheService(std::string_view tag) {
    return tag == "phone-busy-status" ||
           (tag.starts_with("dl-") &&
            (tag.ends_with("-last-status") || tag.ends_with("-last-time")));
}

}  // namespace

void CallFailingCheck::run() const {
    std::set<std::string> seen;
    const DocumentFindings findings = m_rows.of(kList);
    m_rows.forEach(kList, {"item", kColumns, 1}, "CallFailingItems.xml", [&](const RowTexts& row) {
        const std::string& tag = *row[0];
        if (!seen.insert(tag).second) {
            findings.warning({"item \"", tag, "\" is there twice"}, "take one of the rows out");
        } else if (!m_items.contains(tag)) {
            findings.error({"there is no item \"", tag, "\""}, "correct the tag, or take it out");
        } else if (isWrittenByTheService(tag)) {
            findings.error({"item \"", tag,
                            "\" would be refused to the service itself, which "
                            "writes it during calls too"},
                           "take it out");
        }
    });
}

}  // namespace vireo
