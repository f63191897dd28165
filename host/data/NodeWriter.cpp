#include "data/NodeWriter.h"

#include <utility>

#include "data/DxlSchema.h"
#include "data/XmlTree.h"

namespace vireo {
namespace {

using Pointer = DxlNode::Pointer;

/// A copy of `node`, keeping its attributes, that carries `value`; null when it is malformed.
std::shared_ptr<DxlNode> withValue(const DxlNode& node, DxlNode::Kind kind,
                                   const std::string& value) {
    if (kind != DxlNode::Kind::eBranch) {
        return DxlNode::leafLike(node, value);
    }
    auto fresh = std::make_shared<DxlNode>(node);
    return XmlTree::parseFragment(value, *fresh) ? fresh : nullptr;
}

/// A copy of the tree with `fresh` in the place of `target`.
Pointer replaced(const Pointer& node, const DxlNode* target, const Pointer& fresh) {
    if (node.get() == target) {
        return fresh;
    }
    for (std::size_t i = 0; i < node->children().size(); ++i) {
        const Pointer& child = node->children()[i];
        Pointer other = replaced(child, target, fresh);
        if (other != child) {
            auto copy = std::make_shared<DxlNode>(*node);
            copy->replaceChild(i, std::move(other));
            return copy;
        }
    }
    return node;
}

/// A copy of `node` with a new node called `nodeId` where `schemaNode`, its counterpart, has it.
Pointer grown(const DxlNode& node, const DxlNode& schemaNode, const std::string& nodeId,
              const std::string& value) {
    auto copy = std::make_shared<DxlNode>(node);
    for (const Pointer& schemaChild : schemaNode.children()) {
        if (schemaChild->getName() == nodeId) {
            auto fresh = withValue(*schemaChild, schemaChild->kind(), value);
            if (!fresh) {
                return nullptr;
            }
            copy->append(std::move(fresh));
            return copy;
        }
        if (schemaChild->findBelow(nodeId) == nullptr) {
            continue;
        }
        for (std::size_t i = 0; i < node.children().size(); ++i) {
            if (node.children()[i]->getName() == schemaChild->getName()) {
                Pointer child = grown(*node.children()[i], *schemaChild, nodeId, value);
                if (child) {
                    copy->replaceChild(i, std::move(child));
                    return copy;
                }
                return nullptr;
            }
        }
        Pointer child = grown(DxlNode(schemaChild->getName(), DxlNode::Kind::eBranch), *schemaChild,
                              nodeId, value);
        if (child) {
            copy->append(std::move(child));
            return copy;
        }
        return nullptr;
    }
    return nullptr;
}

DxlNode::Kind kindOf(const DxlNode& node, const DxlSchema* schema) {
    if (schema != nullptr) {
        const DxlNode& root = *schema->root();
        const DxlNode* known =
            root.getName() == node.getName() ? &root : root.findBelow(node.getName());
        if (known != nullptr) {
            return known->kind();
        }
    }
    return node.children().empty() ? DxlNode::Kind::eLeaf : DxlNode::Kind::eBranch;
}

}  // namespace

const DxlNode* NodeWriter::find(const DxlNode& root, const std::string& rootId,
                                const std::string& nodeId) {
    if (const DxlNode* below = root.findBelow(nodeId)) {
        return below;
    }
    return nodeId == rootId || nodeId == root.getName() ? &root : nullptr;
}

DxlNode::Pointer NodeWriter::write(const DxlNode::Pointer& root, const DxlSchema* schema,
                                   const std::string& rootId, const std::string& nodeId,
                                   const std::string& value) {
    const DxlNode* below = root->findBelow(nodeId);
    if (below == nullptr && schema != nullptr && schema->root()->findBelow(nodeId) != nullptr) {
        return grown(*root, *schema->root(), nodeId, value);
    }
    const DxlNode* target = below != nullptr ? below : find(*root, rootId, nodeId);
    if (target != nullptr) {
        const Pointer fresh = withValue(*target, kindOf(*target, schema), value);
        return fresh ? replaced(root, target, fresh) : nullptr;
    }
    if (schema != nullptr || !root->text().empty()) {
        return nullptr;
    }
    // Without a schema any node may stand below a root that carries no text of its own.
    auto copy = std::make_shared<DxlNode>(*root);
    copy->append(std::make_shared<DxlNode>(nodeId, DxlNode::Kind::eLeaf, value));
    return copy;
}

}  // namespace vireo
