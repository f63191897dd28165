#include "Commands.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "CallFailure.h"
#include "FileTypes.h"
#include "data/ManageableData.h"
#include "data/XmlText.h"

namespace vireo {
namespace {

constexpr const char* kWholeItem = "//*";
constexpr const char* kNoName = "not an item name";

void refuse(RecordAnswer& answer, const std::string& tag, const std::string& reason) {
    answer.refusals.emplace_back(tag, kWholeItem, reason);
}

bool saysNo(const Method& reply) {
    const auto& all = reply.parameters();
    return std::any_of(all.begin(), all.end(), [](const Parameter& each) {
        return (each.name == "result" && each.type == Parameter::types::eBool &&
                each.number == 0) ||
               (each.name == "Acknowledge" && each.text != "SUCCESS");
    });
}

// What cannot be sent, so that nothing of the command is.
RecordAnswer checkAssignments(const std::vector<Assignment>& assignments) {
    RecordAnswer answer;
    for (const auto& [tag, value] : assignments) {
        if (!XmlText::isName(tag)) {
            refuse(answer, tag, kNoName);
        } else if (const auto found = XmlText::findUncarriable(value)) {
            refuse(answer, tag, "the value holds " + *found + ", which cannot be carried");
        }
    }
    return answer;
}

}  // namespace

ExitCode Commands::get(const std::vector<std::string>& tags) {
    RecordAnswer answer;
    for (const std::string& tag : tags) {
        if (!XmlText::isName(tag)) {
            refuse(answer, tag, kNoName);
        }
    }
    const ExitCode code = answer.refusals.empty() ? read(tags, answer) : ExitCode::eDone;
    return code == ExitCode::eDone ? print(answer) : code;
}

ExitCode Commands::software() {
    RecordAnswer answer;
    const ExitCode code =
        read({"software-version", "software-bank", "software-status", "software-bank-a-version",
              "software-bank-a-status", "software-bank-b-version", "software-bank-b-status"},
             answer);
    if (code != ExitCode::eDone) {
        return code;
    }
    m_printer.software(answer);
    return answer.result ? ExitCode::eDone : ExitCode::eRefused;
}

/// Whatever there is of the items, unless the service cannot be asked.
ExitCode Commands::read(const std::vector<std::string>& tags, RecordAnswer& answer) {
    ManageableData record;
    for (const std::string& tag : tags) {
        record.addRootId(tag, nullptr);
    }
    const std::vector<std::string> asked = record.rootIds();  // each once
    ExitCode code{};
    if (reportFailure(m_client.getData(record, answer.result), code)) {
        return code;
    }
    answer.refusals = record.rejections();
    std::vector<std::string> missing;
    for (const std::string& tag : asked) {
        std::string value;
        if (record.interogate(tag, tag, value)) {
            answer.items.emplace_back(tag, std::move(value));
        } else {
            missing.push_back(tag);
        }
    }
    takeMembers(record, asked, missing, answer);
    if (!answer.result && answer.refusals.empty() && answer.remarks.empty()) {
        answer.remarks.emplace_back(
            "read failed: an item could not be read, its value may be old; the log of the service "
            "says why");
    }
    return ExitCode::eDone;
}

// What the record holds that was not asked for by name are the members of collections. A tag
// without a document of its own is one of those, or could not be read.
void Commands::takeMembers(const ManageableData& record, const std::vector<std::string>& asked,
                           const std::vector<std::string>& missing, RecordAnswer& answer) {
    const std::unordered_set<std::string_view> named(asked.begin(), asked.end());
    bool hasMembers = false;
    for (const DxlDocumentPointer& document : record.documents()) {
        std::string value;
        const std::string& member = document->getName();
        if (!named.contains(member) && record.interogate(member, member, value)) {
            answer.items.emplace_back(member, std::move(value));
            hasMembers = true;
        }
    }
    if (answer.result || (hasMembers && missing.size() == 1)) {
        return;
    }
    for (const std::string& tag : missing) {
        if (!hasMembers || !bringsMembers(tag)) {
            answer.remarks.push_back(explainMissing(tag));
        }
    }
}

// Whether the tag alone is answered with documents.
bool Commands::bringsMembers(const std::string& tag) {
    ManageableData record;
    record.addRootId(tag, nullptr);
    bool result = false;
    return m_client.getData(record, result) == CallStatus::eDone && !record.documents().empty();
}

ExitCode Commands::set(const std::vector<Assignment>& assignments) {
    RecordAnswer answer = checkAssignments(assignments);
    if (!answer.refusals.empty()) {
        return print(answer);
    }
    ManageableData record;
    for (const auto& [tag, value] : assignments) {
        record.populate(tag, tag, value);
    }
    ExitCode code{};
    if (reportFailure(m_client.setData(record, answer.result), code)) {
        return code;
    }
    answer.refusals = record.rejections();
    sortOutWritten(assignments, answer);
    return print(answer);
}

// Which items were written. The service names those that were refused, but it is silent about
// unknown ones, so a failed write needs a second look.
void Commands::sortOutWritten(const std::vector<Assignment>& assignments, RecordAnswer& answer) {
    std::unordered_set<std::string> refused;
    bool explained = answer.result;
    for (const RejectionSpec& refusal : answer.refusals) {
        refused.insert(refusal.rootId());
        explained = explained || refusal.reason() != RejectReasonsStrings::initiated;
    }
    bool certain = true;
    for (const auto& [tag, value] : assignments) {
        if (refused.contains(tag)) {
            continue;
        }
        const std::optional<bool> known =
            answer.result ? std::optional<bool>(true) : (certain ? isKnown(tag) : std::nullopt);
        if (!known) {
            certain = false;
        } else if (*known) {
            answer.items.emplace_back(tag, value);
        } else {
            answer.remarks.push_back(tag + ": not written (unknown item)");
            explained = true;
        }
    }
    if (!certain || !explained) {
        answer.items.clear();
        answer.remarks.emplace_back(
            "write failed: an item is unknown or its owner refused without a reason");
    }
}

ExitCode Commands::schema(const std::string& name) {
    std::string xml;
    const CallStatus status = m_client.exportSchema(name, xml);
    return printName(status, "exportSchema", "schemaXml", xml, "unknown schema '" + name + "'");
}

ExitCode Commands::schemaOf(const std::string& tag) {
    std::string name;
    const CallStatus status = m_client.findSchemaName(tag, name);
    return printName(status, "findSchemaName", "schemaName", name, "unknown item '" + tag + "'");
}

ExitCode Commands::invalidateCache() {
    return printDone(m_client.invalidateVCMSCache(), "invalidateVCMSCache");
}

ExitCode Commands::showBusy() {
    unsigned mask = 0;
    ExitCode code = ExitCode::eDone;
    if (!reportFailure(m_client.retrievePhoneBusyStatus(mask), code)) {
        m_printer.busyStatus(mask);
    }
    return code;
}

ExitCode Commands::setBusy(unsigned bits) {
    return printDone(m_client.setPhoneBusyStatus(bits), "setPhoneBusyStatus");
}

ExitCode Commands::clearBusy(unsigned bits) {
    return printDone(m_client.clearPhoneBusyStatus(bits), "clearPhoneBusyStatus");
}

ExitCode Commands::raiseGenericTrap(int dest, int trap) {
    bool sent = false;
    const CallStatus status =
        m_client.raiseGenericTrap(static_cast<LocalMgmtIfc::TrapDest>(dest), trap, sent);
    return printSent(status, "raiseGenericTrap", sent);
}

ExitCode Commands::raiseSpecificTrap(int dest, const std::string& trapText) {
    bool sent = false;
    const CallStatus status =
        m_client.raiseSpecificTrap(static_cast<LocalMgmtIfc::TrapDest>(dest), trapText, sent);
    return printSent(status, "raiseSpecificTrap", sent);
}

ExitCode Commands::printSent(CallStatus status, const char* methodName, bool sent) {
    ExitCode code = ExitCode::eDone;
    if (!reportFailure(status, code)) {
        m_printer.trap(methodName, sent);
        code = sent ? ExitCode::eDone : ExitCode::eRefused;
    }
    return code;
}

ExitCode Commands::limits(const std::string& fileType) {
    LocalMgmtClient::FileTypeLimits limits;
    ExitCode code = ExitCode::eDone;
    if (!reportFailure(m_client.getFileTypeMetadata(fileType, limits), code)) {
        m_printer.limits(limits);
    }
    return code;
}

ExitCode Commands::downloadStatus(const std::string& fileType, const std::string& fileName) {
    int percent = 0;
    ExitCode code = ExitCode::eDone;
    if (!reportFailure(
            m_client.requestCurrentDownloadStatus(FileTypes::find(fileType), fileName, percent),
            code)) {
        m_printer.downloadStatus(fileType, percent);
        code = percent < 0 ? ExitCode::eRefused : ExitCode::eDone;
    }
    return code;
}

ExitCode Commands::validate(const std::string& fileType, const std::string& fileName) {
    bool accepted = false;
    ExitCode code = ExitCode::eDone;
    if (!reportFailure(m_client.validateFile(FileTypes::find(fileType), fileName, accepted),
                       code)) {
        m_printer.validation(fileType, fileName, accepted);
        code = accepted ? ExitCode::eDone : ExitCode::eRefused;
    }
    return code;
}

ExitCode Commands::call(const std::string& methodName, const std::vector<Parameter>& parameters) {
    Method request(methodName, Method::eRequest);
    for (const Parameter& parameter : parameters) {
        request.addParameter(parameter);
    }
    Method reply;
    ExitCode code = ExitCode::eDone;
    if (!reportFailure(m_client.call(request, reply), code)) {
        m_printer.method(reply);
        code = saysNo(reply) ? ExitCode::eRefused : ExitCode::eDone;
    }
    return code;
}

// True when there is no answer to print; `code` is set then.
bool Commands::reportFailure(CallStatus status, ExitCode& code) {
    if (status == CallStatus::eDone) {
        return false;
    }
    const CallFailure failure = CallFailure::of(m_client, status, m_timeout);
    code = failure.code;
    if (status == CallStatus::eEmptyReply) {
        m_printer.emptyReply();
    } else {
        m_errors << "vireoctl: " << failure.reason << '\n';
    }
    return true;
}

ExitCode Commands::print(const RecordAnswer& answer) {
    m_printer.record(answer);
    return answer.result ? ExitCode::eDone : ExitCode::eRefused;
}

// The end of a command whose reply holds nothing.
ExitCode Commands::printDone(CallStatus status, const char* methodName) {
    ExitCode code = ExitCode::eDone;
    if (!reportFailure(status, code)) {
        m_printer.method(Method(methodName, Method::eResponse));
    }
    return code;
}

ExitCode Commands::printName(CallStatus status, const char* methodName, const char* parameterName,
                             const std::string& value, const std::string& unknown) {
    ExitCode code = ExitCode::eDone;
    if (reportFailure(status, code)) {
        return code;
    }
    m_printer.text(methodName, parameterName, value);
    if (value.empty()) {
        m_errors << "vireoctl: " << unknown << '\n';
        return ExitCode::eRefused;
    }
    return code;
}

// Nothing when the service does not answer that.
std::optional<bool> Commands::isKnown(const std::string& tag) {
    std::string schemaName;
    if (m_client.findSchemaName(tag, schemaName) != CallStatus::eDone) {
        return std::nullopt;
    }
    return !schemaName.empty();
}

std::string Commands::explainMissing(const std::string& tag) {
    const std::optional<bool> known = isKnown(tag);
    if (!known) {
        return tag + ": no value (unknown, or it could not be read)";
    }
    return tag + (*known ? ": no value (it could not be read; the log of the service says why)"
                         : ": no value (unknown item)");
}

}  // namespace vireo
