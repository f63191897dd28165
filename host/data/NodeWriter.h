#pragma once

#include <string>

#include "data/DxlNode.h"

namespace vireo {

class DxlSchema;

/// Finds the node of an item that a node id names, and writes it into a new tree.
class NodeWriter {
public:
    /// The first node called `nodeId` below `root` in document order; when there is none and
    /// `nodeId` is the item or the root's name, the root; else null.
    static const DxlNode* find(const DxlNode& root, const std::string& rootId,
                               const std::string& nodeId);

    /// A copy of the tree in which that node carries `value`; `schema` (may be null) says what is a
    /// branch and where an absent node belongs. Null when there is no place for the node or `value`
    /// is malformed for a branch.
    static DxlNode::Pointer write(const DxlNode::Pointer& root, const DxlSchema* schema,
                                  const std::string& rootId, const std::string& nodeId,
                                  const std::string& value);
};

}  // namespace vireo
