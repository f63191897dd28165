#pragma once

#include <span>
#include <string>
#include <vector>

#include "check/DocumentRows.h"
#include "check/KnownItems.h"
#include "check/NeededItems.h"

namespace vireo {

/// Checks that the items which the service itself needs are there.
class NeededItemsCheck {
public:
    /// Not owned; both outlive this.
    NeededItemsCheck(const KnownItems& items, const DocumentRows& rows)
        : m_items(items), m_findings(rows.of("vcmsServiceList")) {}

    void run() const;

private:
    void checkDownloads(const std::string& infix) const;
    void checkAll(const NeededItems& needed, std::span<const std::string> tags) const;
    void checkOwner(const std::string& tag) const;

    const KnownItems& m_items;
    DocumentFindings m_findings;
};

}  // namespace vireo
