#pragma once

#include <string>
#include <vector>

#include "data/ManageableData.h"

namespace vireo::test {

using Words = std::vector<std::string>;

/// A record of items given as "tag=value".
inline ManageableData recordOf(const Words& assignments) {
    ManageableData record;
    for (const std::string& each : assignments) {
        const std::size_t equals = each.find('=');
        record.populate(each.substr(0, equals), each.substr(equals + 1));
    }
    return record;
}

/// A record that asks for these items.
inline ManageableData requestFor(const Words& tags) {
    ManageableData record;
    for (const std::string& tag : tags) {
        record.addRootId(tag, nullptr);
    }
    return record;
}

/// "tag=value" of every root id of the record, in order; "tag" for one without a value.
inline Words itemsOf(const ManageableData& record) {
    Words items;
    for (const std::string& tag : record.rootIds()) {
        std::string value;
        items.push_back(record.interogate(tag, tag, value) ? tag + '=' + value : tag);
    }
    return items;
}

/// "tag: reason" of every refusal in the record, in order.
inline Words refusalsOf(const ManageableData& record) {
    Words refusals;
    for (const RejectionSpec& each : record.rejections()) {
        refusals.push_back(each.rootId() + ": " + each.reason());
    }
    return refusals;
}

}  // namespace vireo::test
