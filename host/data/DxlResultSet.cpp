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
    bool isChanged = false;
    std::vector<DxlNode::Pointer> children;
    children.reserve(node->children().size());
    for (const DxlNode::Pointer& child : node->children()) {
        children.push_back(
            restored(child, schema ? schema->child(child->getName()) : nullptr, selected));
        isChanged = isChanged || children.back() != child;
    }
    if (!isChanged) {
        return node;
    }
    auto copy = std::make_shared<DxlNode>(*node);
    copy->replaceChildren(std::move(children));
    return copy;
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
