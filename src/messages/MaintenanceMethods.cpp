#include "messages/MaintenanceMethods.h"

#include "LocalMgmtIfc.h"
#include "messages/MethodTable.h"

namespace vireo {
namespace {

void reply(MethodCall& call, int result) {
    call.reply.addBoolParameter("result", Parameter::eOut, result != 0);
}

}  // namespace

void handlePerformFactoryReset(MethodCall& call) {
    reply(call, call.service.performFactoryReset(
                    call.request.getStringParameter("password", Parameter::eIn)));
}

void handlePerformReboot(MethodCall& call) {
    reply(call, call.service.performReboot(
                    call.request.getStringParameter("rebootReason", Parameter::eIn)));
}

void handleClearAllUserData(MethodCall& call) {
    reply(call, call.service.clearAllUserData());
}

}  // namespace vireo
