#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "items/ItemTable.h"
#include "items/StorePlaces.h"

namespace vireo {

/// What the configuration says about items. Filled at start-up, read without locking afterwards.
struct ItemMaps {
    /// Shared with the master item map in the master collection.
    std::shared_ptr<ItemTable> items = std::make_shared<ItemTable>();
    std::unordered_set<std::string> uncachedUnlessRegistered;  ///< management ids
    std::unordered_set<std::string> neverCachedTags;
    std::unordered_set<std::string> callFailingItems;

    StorePlaces places;
    std::unordered_map<std::string, std::string> indexColumns;  ///< of the store's tables
};

}  // namespace vireo
