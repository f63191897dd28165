#include "messages/ItemMethods.h"

#include "LocalMgmtIfc.h"
#include "LogMacros.h"
#include "data/ManageableData.h"
#include "messages/MethodTable.h"
#include "messages/RecordParameter.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "LocalMgmtInvoker";
constexpr const char* kRecord = "manageableData";

}  // namespace

void handleSetData(MethodCall& call) {
    VIREO_LOG(kComponent, kLogDump, "LocalMgmtInvoker::SetData data = \"%s\"\n",
              call.request.getStringParameter(kRecord, Parameter::eInOut).c_str());
    ManageableData record;
    bool result = false;
    if (RecordParameter::readToKeep(call.request, call.protocol, record)) {
        result = call.service.setData(record);
    } else {
        RecordParameter::becomeRefusal(record, RejectReasonsStrings::invalid_data);
    }
    RecordParameter::addWithResult(call.reply, call.protocol, result, record);
    VIREO_LOG(kComponent, kLogDump, "LocalMgmtInvoker::SetData returned data = \"%s\"\n",
              call.reply.getStringParameter(kRecord, Parameter::eOut).c_str());
}

void handleGetData(MethodCall& call) {
    ManageableData record;
    bool result = false;
    if (RecordParameter::read(call.request, record)) {
        result = call.service.getData(record);
    } else {
        RecordParameter::becomeRefusal(record, RejectReasonsStrings::invalid_data);
    }
    RecordParameter::addWithResult(call.reply, call.protocol, result, record);
}

void handleInvalidateVCMSCache(MethodCall& call) {
    call.service.invalidateVCMSCache();
}

}  // namespace vireo
