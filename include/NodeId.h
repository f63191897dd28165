#pragma once

#include <compare>
#include <string>

namespace vireo {

/// One node of one item. Ordered by the item, then by the node, byte by byte.
struct NodeId {
    std::string rootId;
    std::string nodeId;

    friend bool operator==(const NodeId&, const NodeId&) = default;
    friend auto operator<=>(const NodeId&, const NodeId&) = default;
};

}  // namespace vireo
