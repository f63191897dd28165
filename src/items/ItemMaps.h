#pragma once

#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "NodeId.h"
#include "data/DxlDocument.h"

namespace vireo {

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
    std::map<NodeId, StoreAddress> storeAddresses;
    std::unordered_map<std::string, std::string> indexColumns;  ///< of the store's tables
};

}  // namespace vireo
