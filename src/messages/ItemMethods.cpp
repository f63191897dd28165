#include "messages/ItemMethods.h"

#include <memory>
#include <utility>

#include "LocalMgmtIfc.h"
#include "LogMacros.h"
#include "data/ManageableData.h"
#include "items/GroupedWrites.h"
#include "messages/MethodReply.h"
#include "messages/MethodTable.h"
#include "messages/RecordParameter.h"
#include "service/Invoker.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "LocalMgmtInvoker";
constexpr const char* kRecord = "manageableData";

void answerSetData(Method& reply, const std::string& protocol, bool result,
                   const ManageableData& record) {
    RecordParameter::addWithResult(reply, protocol, result, record);
    VIREO_LOG(kComponent, kLogDump, "LocalMgmtInvoker::SetData returned data = \"%s\"\n",
              reply.getStringParameter(kRecord, Parameter::eOut).c_str());
}

/// Leaves the write to those that are committed together. False when it has to be done alone.
bool writeInGroup(MethodCall& call, ManageableData& record) {
    if (call.grouped == nullptr || !call.grouped->takesInGroup(record)) {
        return false;
    }
    const std::shared_ptr<InvokerResponse> response = call.response.postpone();
    if (!response) {
        return false;
    }
    call.isPostponed = true;
    call.grouped->setDataInGroup(std::move(record),
                                 [response, name = call.request.name(), &adapter = call.adapter](
                                     bool result, const ManageableData& written) {
                                     Method reply(name, Method::eResponse);
                                     answerSetData(reply, response->protocol(), result, written);
                                     std::string text;
                                     MethodReply::encode(adapter, reply, text);
                                     MethodReply::send(*response, text);
                                 });
    return true;
}

}  // namespace

void handleSetData(MethodCall& call) {
    VIREO_LOG(kComponent, kLogDump, "LocalMgmtInvoker::SetData data = \"%s\"\n",
              call.request.getStringParameter(kRecord, Parameter::eInOut).c_str());
    ManageableData record;
    bool result = false;
    if (RecordParameter::readToKeep(call.request, call.protocol, record)) {
        if (writeInGroup(call, record)) {
            return;
        }
        result = call.service.setData(record);
    } else {
        RecordParameter::becomeRefusal(record, RejectReasonsStrings::invalid_data);
    }
    answerSetData(call.reply, call.protocol, result, record);
}

void handleGetData(MethodCall& call) {
    ManageableData record;
    bool result = false;
    if (RecordParameter::read(call.request, record)) {
        if (call.isGroupOpen && call.grouped != nullptr) {
            call.grouped->finishGroupBefore(record);
        }
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
