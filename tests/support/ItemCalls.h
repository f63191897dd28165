#pragma once

#include <string>

#include "LocalMgmtClient.h"
#include "support/Records.h"

namespace vireo::test {

/// What a read or a write of items answered.
struct ItemAnswer {
    bool result = false;
    Words items;     ///< "tag=value", or "tag" for one without a value, in order
    Words refusals;  ///< "tag: reason", in order

    /// The value of an item, also of one that came for a collection; "none" if there is none.
    std::string value(const std::string& tag) const;

    ManageableData record;
};

/// Reads items with one message. A call without an answer is a failure of the test.
ItemAnswer readItems(LocalMgmtClient& client, const Words& tags);
/// Writes items with one message, each given as "tag=value".
ItemAnswer writeItems(LocalMgmtClient& client, const Words& assignments);
/// Announces that items have changed. The number of messages that this made, as the service says.
int announceItems(LocalMgmtClient& client, const Words& assignments);

}  // namespace vireo::test
