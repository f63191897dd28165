#include "messages/ItemMethods.h"

#include <utility>

#include "LocalMgmtIfc.h"
#include "LogMacros.h"
#include "data/ManageableData.h"
#include "messages/MethodTable.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "LocalMgmtInvoker";
constexpr const char* kRecord = "manageableData";

// A message holds 4 MiB; this leaves room for what goes around the record.
constexpr std::size_t kLongestRecord = (4U << 20U) - (64U << 10U);
// An item of several parts, each written for itself, has to stay readable.
constexpr std::size_t kLongestItem = 512U << 10U;
// No character of a request takes more than six in an answer.
constexpr std::size_t kLongestGrowth = 8;

void addRecordText(Method& reply, bool result, std::string text) {
    reply.addBoolParameter("result", Parameter::eOut, result);
    reply.addStringParameter(kRecord, Parameter::eOut, std::move(text));
}

/// Answers that nothing of the request was done.
void refuseWhole(Method& reply, const char* reason) {
    ManageableData refusal;
    refusal.addRejectReason("", "//*", reason);
    addRecordText(reply, false, refusal.serialize());
}

/// Reads the record of the request. One that is malformed is refused as a whole: what it would have
/// asked for cannot be told.
bool readRecord(MethodCall& call, ManageableData& record) {
    if (record.deserialize(call.request.getStringParameter(kRecord, Parameter::eInOut))) {
        record.clearRejectReasons();  // refusals belong to answers
        return true;
    }
    refuseWhole(call.reply, RejectReasonsStrings::invalid_data);
    return false;
}

/// Whether what is to be written can be read back by message. A text can be several times as long
/// in the answer as in the request, where a sender is free to write it shorter.
bool canBeRead(const ManageableData& record) {
    for (const std::string& rootId : record.rootIds()) {
        const DxlDocumentPointer document = record.getDocument(rootId);
        if (document && document->text().size() > kLongestItem) {
            VIREO_LOG(kComponent, kLogWarning, "the value of %s is too long to be read back",
                      rootId.c_str());
            return false;
        }
    }
    // The schemas that the service adds, and refusals, need room as well.
    return record.serialize().size() <= kLongestRecord / 2;
}

}  // namespace

void handleSetData(MethodCall& call) {
    ManageableData record;
    VIREO_LOG(kComponent, kLogDump, "LocalMgmtInvoker::SetData data = \"%s\"\n",
              call.request.getStringParameter(kRecord, Parameter::eInOut).c_str());
    if (!readRecord(call, record)) {
        return;
    }
    const std::string& text = call.request.getStringParameter(kRecord, Parameter::eInOut);
    if (text.size() > kLongestItem / kLongestGrowth && !canBeRead(record)) {
        refuseWhole(call.reply, RejectReasonsStrings::invalid_data);
        return;
    }
    const bool result = call.service.setData(record);
    addRecordText(call.reply, result, record.serialize());
    VIREO_LOG(kComponent, kLogDump, "LocalMgmtInvoker::SetData returned data = \"%s\"\n",
              call.reply.getStringParameter(kRecord, Parameter::eOut).c_str());
}

void handleGetData(MethodCall& call) {
    ManageableData record;
    if (!readRecord(call, record)) {
        return;
    }
    const bool result = call.service.getData(record);
    std::string text = record.serialize();
    if (text.size() > kLongestRecord) {
        VIREO_LOG(kComponent, kLogWarning,
                  "an answer of %zu bytes is too long, ask for fewer items", text.size());
        refuseWhole(call.reply, RejectReasonsStrings::request_failed);
        return;
    }
    addRecordText(call.reply, result, std::move(text));
}

void handleInvalidateVCMSCache(MethodCall& call) {
    call.service.invalidateVCMSCache();
}

}  // namespace vireo
