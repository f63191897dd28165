#pragma once

#include <string>
#include <utility>
#include <vector>

#include "LocalMgmtClient.h"

namespace vireo::test {

/// What a read or a write of items answered.
struct ItemAnswer {
    bool result = false;
    std::vector<std::string> items;     ///< "tag=value", or "tag" for one without a value, in order
    std::vector<std::string> refusals;  ///< "tag: reason", in order

    /// The value of an item, also of one that came for a collection; "none" if there is none.
    std::string value(const std::string& tag) const;

    ManageableData record;
};

using Words = std::vector<std::string>;

/// Reads items with one message. A call without an answer is a failure of the test.
ItemAnswer readItems(LocalMgmtClient& client, const Words& tags);
/// Writes items with one message, each given as "tag=value".
ItemAnswer writeItems(LocalMgmtClient& client, const Words& assignments);
/// Announces that items have changed. The number of messages that this made, as the service says.
int announceItems(LocalMgmtClient& client, const Words& assignments);

/// "tag=value" of every root id of the record, in order.
Words itemsOf(const ManageableData& record);
/// A record of items given as "tag=value".
ManageableData recordOf(const Words& assignments);

}  // namespace vireo::test
