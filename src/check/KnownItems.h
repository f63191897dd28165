#pragma once

#include <map>
#include <string>

namespace vireo {

/// An item of the configuration.
struct KnownItem {
    std::string owner;     ///< its management id
    std::string schema;    ///< the schema's name
    std::string document;  ///< the item map that has it
};

/// All items by tag.
using KnownItems = std::map<std::string, KnownItem, std::less<>>;

}  // namespace vireo
