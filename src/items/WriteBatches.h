#pragma once

#include <map>
#include <string>

#include "data/ManageableData.h"
#include "items/NotificationOrder.h"

namespace vireo {

class AgentRegistry;

/// The items of one write whose owners want them in one record, gathered by management id.
class WriteBatches {
public:
    /// Takes the item's document and schema from `record`.
    void add(const std::string& managementId, const ManageableData& record,
             const std::string& rootId);
    /// Sends each batch to its owner, in management id order. False when any was refused; the
    /// refusals are appended to `record`. The items took effect when their owner has answered.
    bool send(AgentRegistry& registry, ManageableData& record, NotificationOrder::Change& change);

private:
    static bool sendOne(AgentRegistry& registry, const std::string& managementId,
                        ManageableData& batch, ManageableData& record);

    std::map<std::string, ManageableData> m_batches;
};

}  // namespace vireo
