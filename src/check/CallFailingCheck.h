#pragma once

#include "check/DocumentRows.h"
#include "check/KnownItems.h"

namespace vireo {

/// Checks the list of items that cannot be written during a call.
class CallFailingCheck {
public:
    /// Not owned; both outlive this.
    CallFailingCheck(const KnownItems& items, const DocumentRows& rows)
        : m_items(items), m_rows(rows) {}

    void run() const;

private:
    const KnownItems& m_items;
    const DocumentRows& m_rows;
};

}  // namespace vireo
