#include "messages/AgentMethods.h"

#include <list>
#include <string>

#include "LocalMgmtIfc.h"
#include "LogMacros.h"
#include "MgmtAgentIfc.h"
#include "data/ManageableData.h"
#include "messages/MethodTable.h"
#include "messages/RecordParameter.h"
#include "service/Executable.h"
#include "service/Invoker.h"
#include "service/Serializer.h"

namespace vireo {
namespace {

/// Calls `use` with the sender as an agent and answers what it answers. A sender that is no agent
/// gets false, and a line that names `what`.
template <class Use>
void withSender(MethodCall& call, const char* what, Use&& use) {
    auto* agent = dynamic_cast<MgmtAgentIfc*>(call.framework.findPeerProxy("MgmtAgentIfc"));
    if (agent == nullptr) {
        VIREO_LOG("LocalMgmtInvoker", kLogDebug, "%s: Could not cast to MgmtAgentIfc.", what);
    }
    call.reply.addBoolParameter("result", Parameter::eOut, agent != nullptr && use(agent));
}

void registerAgent(MethodCall& call, const std::string& id, bool bulk) {
    withSender(call, "registerManagementIdentity", [&](MgmtAgentIfc* agent) {
        return call.service.registerManagementIdentity(id, agent, bulk);
    });
}

void observe(MethodCall& call, const std::string& rootId, bool bulk) {
    withSender(call, "observeData", [&](MgmtAgentIfc* agent) {
        return call.service.observeManageableData(rootId, agent, bulk) != 0;
    });
}

const std::string& text(const MethodCall& call, const char* name) {
    return call.request.getStringParameter(name, Parameter::eIn);
}

bool isBulk(const MethodCall& call) {
    return call.request.getBoolParameter("bulkDataManageable", Parameter::eIn);
}

}  // namespace

void handleRegisterManagementIdentity(MethodCall& call) {
    registerAgent(call, text(call, "managementId"), false);
}

void handleRegisterManagementIdentityBulkData(MethodCall& call) {
    const std::string& id = text(call, "managementId");
    registerAgent(call, id, isBulk(call));
}

void handleObserveData(MethodCall& call) {
    observe(call, text(call, "nodeId"), false);
}

void handleObserveDataBulkData(MethodCall& call) {
    const std::string& rootId = text(call, "nodeId");
    observe(call, rootId, isBulk(call));
}

void handleObserveListDataBulkData(MethodCall& call) {
    std::string_view list = text(call, "rootIds");
    std::list<std::string> rootIds;
    if (!Serializer::deserialize(list, rootIds) || !list.empty()) {
        throw MethodError("method \"" + call.request.name() +
                          "\": parameter \"rootIds\" is no list of strings");
    }
    // Deliberate: the line names "observeData".
    withSender(call, "observeData", [&](MgmtAgentIfc* agent) {
        return call.service.observeManageableData(rootIds, agent) != 0;
    });
}

void handleStopObservingData(MethodCall& call) {
    const std::string& rootId = text(call, "nodeId");
    withSender(call, "stopObservingData", [&](MgmtAgentIfc* agent) {
        return call.service.stopObservingManageableData(rootId, agent);
    });
}

void handleManageableDataChanged(MethodCall& call) {
    ManageableData record;
    unsigned told = 0;
    if (RecordParameter::readToKeep(call.request, call.protocol, record)) {
        told = call.service.manageableDataChanged(record);
    } else {
        RecordParameter::becomeRefusal(record, RejectReasonsStrings::invalid_data);
    }
    call.reply.addIntParameter("numObservers", Parameter::eOut, static_cast<int>(told));
    RecordParameter::add(call.reply, record);
}

}  // namespace vireo
