#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Visibility.h"
#include "data/DxlDocument.h"

namespace vireo {

class DxlSchema;

/// The rows of a `DxlDocument::select`. Keeps the tree that it was selected from alive. Used by one
/// thread at a time.
class VIREO_API DxlResultSet {
public:
    /// Rows point into `root`'s tree; null stands for an absent element.
    DxlResultSet(DxlNode::Pointer root, std::vector<const DxlNode*> rows);

    bool eof() const { return m_position >= m_rows.size(); }
    /// The current row: `isNull` for an absent element, else its value (empty for an empty
    /// element). At the end: null.
    void getValue(std::string& value, bool& isNull) const;
    void next();
    void rewind() { m_position = 0; }

    /// The tree with every selected node back at its default in `schema`; nodes that the schema
    /// does not know become empty. The tree that was selected from stays as it is.
    DxlNode::Pointer restoreDefaults(const DxlSchema& schema) const;

private:
    DxlNode::Pointer m_root;
    std::vector<const DxlNode*> m_rows;
    std::size_t m_position = 0;
};

}  // namespace vireo
