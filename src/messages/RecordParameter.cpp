#include "messages/RecordParameter.h"

#include <cstddef>
#include <string>
#include <utility>

#include "LogMacros.h"
#include "data/ManageableData.h"
#include "data/XmlText.h"
#include "service/Method.h"
#include "service/ProtocolAdapter.h"

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

/// The bytes that the text takes in a message.
std::size_t sizeIn(const std::string& protocol, const std::string& text) {
    if (protocol != VireoProtocols::SERVICE_XML) {
        return text.size();
    }
    std::string escaped;
    XmlText::appendEscaped(escaped, text);
    return escaped.size();
}

/// Whether what is to be kept can be read back by message. A text can be several times as long in
/// the answer as in the request, where a sender is free to write it shorter.
bool canBeRead(const ManageableData& record, const std::string& protocol) {
    for (const std::string& rootId : record.rootIds()) {
        const DxlDocumentPointer document = record.getDocument(rootId);
        if (document && document->text().size() > kLongestItem) {
            VIREO_LOG(kComponent, kLogWarning, "the value of %s is too long to be read back",
                      rootId.c_str());
            return false;
        }
    }
    // The schemas that the service adds, and refusals, need room as well.
    return sizeIn(protocol, record.serialize()) <= kLongestRecord / 2;
}

const std::string& textOf(const Method& request) {
    return request.getStringParameter(kRecord, Parameter::eInOut);
}

}  // namespace

bool RecordParameter::read(const Method& request, ManageableData& record) {
    if (!record.deserialize(textOf(request))) {
        return false;
    }
    record.clearRejectReasons();  // refusals belong to answers
    return true;
}

bool RecordParameter::readToKeep(const Method& request, const std::string& protocol,
                                 ManageableData& record) {
    return read(request, record) &&
           (textOf(request).size() <= kLongestItem / kLongestGrowth || canBeRead(record, protocol));
}

void RecordParameter::addWithResult(Method& reply, const std::string& protocol, bool result,
                                    const ManageableData& record) {
    std::string text = record.serialize();
    // No character takes more than five bytes when it is escaped.
    if (text.size() > kLongestRecord / 5 && sizeIn(protocol, text) > kLongestRecord) {
        VIREO_LOG(kComponent, kLogWarning,
                  "an answer of %zu bytes is too long, ask for fewer items", text.size());
        ManageableData refusal;
        becomeRefusal(refusal, RejectReasonsStrings::request_failed);
        text = refusal.serialize();
        result = false;
    }
    reply.addBoolParameter("result", Parameter::eOut, result);
    reply.addStringParameter(kRecord, Parameter::eOut, std::move(text));
}

void RecordParameter::add(Method& reply, const ManageableData& record) {
    reply.addStringParameter(kRecord, Parameter::eOut, record.serialize());
}

void RecordParameter::becomeRefusal(ManageableData& record, const char* reason) {
    record.clearAll();
    record.addRejectReason("", "//*", reason);
}

}  // namespace vireo
