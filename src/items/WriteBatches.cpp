#include "items/WriteBatches.h"

#include <vector>

#include "Boundary.h"
#include "MgmtAgentIfc.h"
#include "items/AgentRegistry.h"
#include "items/ItemRecords.h"

namespace vireo {

void WriteBatches::add(const std::string& managementId, const ManageableData& record,
                       const std::string& rootId) {
    ManageableData& batch = m_batches[managementId];
    ItemRecords::copyItem(record, batch, rootId);
    batch.addRootId(rootId, nullptr);
}

bool WriteBatches::send(AgentRegistry& registry, ManageableData& record,
                        NotificationOrder::Change& change) {
    bool result = true;
    for (auto& [managementId, batch] : m_batches) {
        const std::vector<std::string> rootIds =
            batch.rootIds();  // the owner may change the record
        result = sendOne(registry, managementId, batch, record) && result;
        for (const std::string& rootId : rootIds) {
            change.tookEffect(rootId);
        }
    }
    return result;
}

bool WriteBatches::sendOne(AgentRegistry& registry, const std::string& managementId,
                           ManageableData& batch, ManageableData& record) {
    const std::vector<std::string> rootIds = batch.rootIds();
    const MgmtAgentDetails owner = registry.findManageableProxy(managementId);
    VCMS_LOG(kLogDump, "VireoClientMgmt::setData() started calling bulk setData() on '%s'",
             managementId.c_str());
    const bool accepted = owner.agent != nullptr && guarded("setData of an agent", false, [&] {
                              return owner.agent->setData(batch);
                          });
    VCMS_LOG(kLogDump, "VireoClientMgmt::setData() completed calling bulk setData() on '%s'",
             managementId.c_str());
    if (accepted) {
        return true;
    }
    if (ItemRecords::takeRefusals(batch, rootIds, record)) {
        return false;
    }
    for (const std::string& rootId : rootIds) {
        // Deliberate: lower case here, "Unknown" where a single item fails.
        record.addRejectReason(rootId, "//*", "unknown");
    }
    return false;
}

}  // namespace vireo
