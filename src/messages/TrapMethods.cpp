#include "messages/TrapMethods.h"

#include <string>

#include "LocalMgmtIfc.h"
#include "LogMacros.h"
#include "messages/MethodTable.h"
#include "snmp/SNMPTrapData.h"

namespace vireo {
namespace {

LocalMgmtIfc::TrapDest destinationOf(const Method& request) {
    return static_cast<LocalMgmtIfc::TrapDest>(request.getIntParameter("dest", Parameter::eIn));
}

void replyResult(MethodCall& call, bool result) {
    call.reply.addBoolParameter("result", Parameter::eOut, result);
}

/// A text that is no trap is not sent as an empty one.
bool handleMessageSNMP(LocalMgmtIfc& service, LocalMgmtIfc::TrapDest dest,
                       const std::string& text) {
    SNMPTrapData data;
    if (!data.deserialize(text)) {
        VIREO_LOG("LocalMgmtInvoker", kLogWarning, "%zu bytes are no text of a trap", text.size());
        return false;
    }
    return service.raiseSpecificTrap(dest, data);
}

}  // namespace

void handleRaiseGenericTrap(MethodCall& call) {
    const LocalMgmtIfc::TrapDest dest = destinationOf(call.request);
    const int trapNo = call.request.getIntParameter("trapNo", Parameter::eIn);
    replyResult(call, call.service.raiseGenericTrap(dest, trapNo));
}

void handleRaiseSpecificTrap(MethodCall& call) {
    const LocalMgmtIfc::TrapDest dest = destinationOf(call.request);
    const std::string& text = call.request.getStringParameter("SNMPTrapData", Parameter::eIn);
    replyResult(call, handleMessageSNMP(call.service, dest, text));
}

}  // namespace vireo
