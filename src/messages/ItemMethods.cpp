#include "messages/ItemMethods.h"

#include "LocalMgmtIfc.h"
#include "LogMacros.h"
#include "data/ManageableData.h"
#include "messages/MethodTable.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "LocalMgmtInvoker";
constexpr const char* kRecord = "manageableData";

void addRecord(Method& reply, bool result, const ManageableData& record) {
    reply.addBoolParameter("result", Parameter::eOut, result);
    reply.addStringParameter(kRecord, Parameter::eOut, record.serialize());
}

/// Reads the record of the request. One that is malformed is refused as a whole: what it would have
/// asked for cannot be told.
bool readRecord(MethodCall& call, ManageableData& record) {
    if (record.deserialize(call.request.getStringParameter(kRecord, Parameter::eInOut))) {
        return true;
    }
    record.addRejectReason("", "//*", RejectReasonsStrings::invalid_data);
    addRecord(call.reply, false, record);
    return false;
}

}  // namespace

void handleSetData(MethodCall& call) {
    ManageableData record;
    VIREO_LOG(kComponent, kLogDump, "LocalMgmtInvoker::SetData data = \"%s\"\n",
              call.request.getStringParameter(kRecord, Parameter::eInOut).c_str());
    if (!readRecord(call, record)) {
        return;
    }
    const bool result = call.service.setData(record);
    addRecord(call.reply, result, record);
    VIREO_LOG(kComponent, kLogDump, "LocalMgmtInvoker::SetData returned data = \"%s\"\n",
              call.reply.getStringParameter(kRecord, Parameter::eOut).c_str());
}

void handleGetData(MethodCall& call) {
    ManageableData record;
    if (readRecord(call, record)) {
        const bool result = call.service.getData(record);
        addRecord(call.reply, result, record);
    }
}

void handleInvalidateVCMSCache(MethodCall& call) {
    call.service.invalidateVCMSCache();
}

}  // namespace vireo
