#include "data/DxlResultSet.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "data/DxlSchema.h"

namespace vireo {
namespace {

using Selection = std::unordered_set<const DxlNode*>;

/// A copy of `node` with the selected nodes as in `schema`, which is the schema's node at the same
/// place or null.
DxlNode::Pointer restored(const DxlNode::Pointer& node, const DxlNode* schema,
                          const Selection& selected) {
    if (selected.contains(node.get())) {
        auto fresh = std::make_shared<DxlNode>(node->getName(), DxlNode::Kind::eLeaf);
        if (schema != nullptr) {
            fresh->adoptContent(*schema);
        }
        return fresh;
    }
    std::shared_ptr<DxlNode> copy;
    for (std::size_t i = 0; i < node->children().size(); ++i) {
        const DxlNode::Pointer& child = node->children()[i];
        DxlNode::Pointer other =
            restored(child, schema ? schema->child(child->getName()) : nullptr, selected);
        if (other != child) {
            if (!copy) {
                copy = std::make_shared<DxlNode>(*node);
            }
            copy->replaceChild(i, std::move(other));
        }
    }
    return copy ? DxlNode::Pointer(std::move(copy)) : node;
}

}  // namespace

DxlResultSet::DxlResultSet(DxlNode::Pointer root, std::vector<const DxlNode*> rows)
    : m_root(std::move(root)), m_rows(std::move(rows)) {}

void DxlResultSet::getValue(std::string& value, bool& isNull) const {
    const DxlNode* node = eof() ? nullptr : m_rows[m_position];
    isNull = node == nullptr;
    if (isNull) {
        value.clear();
    } else {
        value = node->value();
    }
}

void DxlResultSet::next() {
    if (!eof()) {
        ++m_position;
    }
}

DxlNode::Pointer DxlResultSet::restoreDefaults(const DxlSchema& schema) const {
    Selection selected(m_rows.begin(), m_rows.end());
    selected.erase(nullptr);
    return restored(m_root, schema.root().get(), selected);
}

}  // namespace vireo
