#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "NodeId.h"
#include "data/DxlDocument.h"

namespace vireo {

/// A node to be looked up, without a copy of its names. Ordered like `NodeId`.
struct NodeName {
    std::string_view rootId;
    std::string_view nodeId;

    friend bool operator<(const NodeName& one, const NodeName& other) {
        const int order = one.rootId.compare(other.rootId);
        return order != 0 ? order < 0 : one.nodeId < other.nodeId;
    }
    friend bool operator<(const NodeName& one, const NodeId& other) {
        return one < NodeName{other.rootId, other.nodeId};
    }
    friend bool operator<(const NodeId& one, const NodeName& other) {
        return NodeName{one.rootId, one.nodeId} < other;
    }
};

/// Where the persistent store keeps a node.
struct StoreAddress {
    std::string table;
    std::string column;
    std::optional<std::string> indexValue;    ///< of a table-kept item
    std::optional<std::string> defaultValue;  ///< used when the store has no value
};

/// The name of the service's own map of items, a schema and a document in the master collection.
inline constexpr const char* kMasterItemMap = "masterItemMap";

/// What the configuration says about items. Filled at start-up, read without locking afterwards.
struct ItemMaps {
    DxlDocumentPointer masterItemMap;  ///< a branch per item: its owner and its schema
    std::unordered_set<std::string> uncachedUnlessRegistered;  ///< management ids
    std::unordered_set<std::string> neverCachedTags;
    std::unordered_set<std::string> callFailingItems;

    /// The nodes that the store keeps of an item, in mapping order.
    std::unordered_map<std::string, std::vector<std::string>> storedNodes;
    std::map<NodeId, StoreAddress, std::less<>> storeAddresses;
    std::unordered_map<std::string, std::string> indexColumns;  ///< of the store's tables
};

}  // namespace vireo
