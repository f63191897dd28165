#include "LocalMgmtClient.h"

#include <charconv>
#include <list>
#include <system_error>
#include <utility>

#include "ClientSession.h"
#include "messages/FrameCodec.h"
#include "messages/RpcAdapter.h"
#include "messages/ServiceXmlAdapter.h"
#include "service/ClientUtils.h"
#include "service/Serializer.h"

namespace vireo {
namespace {

using std::chrono::milliseconds;

constexpr std::string_view kInterface = "LocalMgmtIfc";
constexpr std::size_t kMaximumName = 255;

bool encode(LocalMgmtClient::Protocol protocol, const Method& method, std::string& payload) {
    if (protocol == LocalMgmtClient::Protocol::eXml) {
        return ServiceXmlAdapter::encodeText(method, payload);
    }
    RpcAdapter::encodeText(method, payload);
    return true;
}

bool decode(LocalMgmtClient::Protocol protocol, std::string_view payload, Method& method) {
    return protocol == LocalMgmtClient::Protocol::eXml
               ? ServiceXmlAdapter::decodeText(payload, method)
               : RpcAdapter::decodeText(payload, method);
}

bool takeElement(const std::string& xml, const char* name, int& number) {
    const std::string text = ClientUtils::extractValueFromXMLString(xml, name);
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && next == end;
}

// The service gives the limits in another form in each protocol.
bool takeLimits(LocalMgmtClient::Protocol protocol, const Method& reply,
                LocalMgmtClient::FileTypeLimits& limits) {
    constexpr const char* kAnswer = "FileTypeMetadata";
    if (protocol == LocalMgmtClient::Protocol::eXml) {
        const std::string& xml = reply.getXMLParameter(kAnswer, Parameter::eOut);
        return takeElement(xml, "maxFileTypeEntries", limits.entries) &&
               takeElement(xml, "maxFileTypeNameChars", limits.nameCharacters);
    }
    std::string_view text = reply.getStringParameter(kAnswer, Parameter::eOut);
    return Serializer::deserialize(text, limits.entries) &&
           Serializer::deserialize(text, limits.nameCharacters) && text.empty();
}

Method fileTypeRequest(const char* methodName, const std::string& fileType) {
    Method request(methodName, Method::eRequest);
    request.addStringParameter("FileType", Parameter::eIn, fileType);
    return request;
}

auto takeResultInto(bool& result) {
    return [&result](const Method& reply) {
        result = reply.getBoolParameter("result", Parameter::eOut);
    };
}

// Takes values out of a reply; one that lacks them is malformed.
template <class Take>
CallStatus takeFrom(Take&& take) {
    try {
        return take() ? CallStatus::eDone : CallStatus::eMalformedReply;
    } catch (const MethodError&) {
        return CallStatus::eMalformedReply;
    }
}

}  // namespace

std::unique_ptr<LocalMgmtClient> LocalMgmtClient::connect(const Options& options,
                                                          std::string& error) {
    if (options.channelName.empty() || options.channelName.size() > kMaximumName) {
        error = "cannot reach the service at '" + options.socketPath +
                "': a channel name has 1 to 255 bytes";
        return nullptr;
    }
    if (options.timeout <= milliseconds::zero()) {
        error = "cannot reach the service at '" + options.socketPath + "': a timeout of " +
                std::to_string(options.timeout.count()) + " ms leaves no time";
        return nullptr;
    }
    std::unique_ptr<ClientSession> session = ClientSession::open(
        {options.socketPath, options.channelName, options.timeout, options.agent}, error);
    if (!session) {
        return nullptr;
    }
    return std::unique_ptr<LocalMgmtClient>(
        new LocalMgmtClient(std::move(session), options.protocol));
}

LocalMgmtClient::LocalMgmtClient(std::unique_ptr<ClientSession> session, Protocol protocol)
    : m_session(std::move(session)), m_protocol(protocol) {}

LocalMgmtClient::~LocalMgmtClient() = default;

const std::string& LocalMgmtClient::channelName() const {
    return m_session->channelName();
}

std::string LocalMgmtClient::closeReason() const {
    return m_session->closeReason();
}

void LocalMgmtClient::setTimeout(milliseconds timeout) {
    m_session->setTimeout(timeout);
}

CallStatus LocalMgmtClient::serve(milliseconds timeout) {
    return m_session->serve(timeout);
}

CallStatus LocalMgmtClient::serveUntilStopped() {
    return m_session->serveUntilStopped();
}

void LocalMgmtClient::stopServing() noexcept {
    m_session->stopServing();
}

bool LocalMgmtClient::startServing() {
    return m_session->startServing();
}

int LocalMgmtClient::pollDescriptor() const {
    return m_session->readyDescriptor();
}

CallStatus LocalMgmtClient::callRaw(std::string_view protocol, std::string_view payload,
                                    std::string& replyPayload) {
    if (payload.size() > FrameCodec::kMaximumPayload || protocol.size() > kMaximumName) {
        return CallStatus::eTooLarge;
    }
    std::string received;
    const CallStatus status = m_session->call(protocol, kInterface, payload, received);
    if (status != CallStatus::eDone) {
        return status;
    }
    if (received.empty()) {
        return CallStatus::eEmptyReply;
    }
    replyPayload = std::move(received);
    return CallStatus::eDone;
}

CallStatus LocalMgmtClient::call(const Method& request, Method& reply) {
    std::string payload;
    if (!encode(m_protocol, request, payload)) {
        return CallStatus::eNotCarried;
    }
    const char* const protocol =
        m_protocol == Protocol::eXml ? VireoProtocols::SERVICE_XML : VireoProtocols::DEFAULT;
    std::string received;
    if (const CallStatus status = callRaw(protocol, payload, received);
        status != CallStatus::eDone) {
        return status;
    }
    Method decoded;
    if (!decode(m_protocol, received, decoded) || decoded.type() != Method::eResponse) {
        return CallStatus::eMalformedReply;
    }
    reply = std::move(decoded);
    return CallStatus::eDone;
}

// A call whose reply bears the name of its request.
CallStatus LocalMgmtClient::callNamed(const Method& request, Method& reply) {
    const CallStatus status = call(request, reply);
    if (status == CallStatus::eDone && reply.name() != request.name()) {
        return CallStatus::eMalformedReply;
    }
    return status;
}

CallStatus LocalMgmtClient::askText(const Method& request, const char* answer, std::string& text) {
    Method reply;
    if (const CallStatus status = callNamed(request, reply); status != CallStatus::eDone) {
        return status;
    }
    return takeFrom([&] {
        text = reply.getStringParameter(answer, Parameter::eOut);
        return true;
    });
}

CallStatus LocalMgmtClient::askNumber(const Method& request, const char* answer, int& number) {
    Method reply;
    if (const CallStatus status = callNamed(request, reply); status != CallStatus::eDone) {
        return status;
    }
    return takeFrom([&] {
        number = reply.getIntParameter(answer, Parameter::eOut);
        return true;
    });
}

// Sends the record and takes the one of the reply in its place; `takeResult` takes the rest of the
// reply.
template <class TakeResult>
CallStatus LocalMgmtClient::exchangeRecord(const char* methodName, ManageableData& record,
                                           TakeResult&& takeResult) {
    Method request(methodName, Method::eRequest);
    request.addStringParameter("manageableData", Parameter::eInOut,
                               record.serialize(ManageableData::eWithoutRejections));
    Method reply;
    if (const CallStatus status = callNamed(request, reply); status != CallStatus::eDone) {
        return status;
    }
    return takeFrom([&] {
        ManageableData answer;
        if (!answer.deserialize(reply.getStringParameter("manageableData", Parameter::eOut))) {
            return false;
        }
        takeResult(reply);
        // Not an assignment: the record stays bound to its dictionary.
        record.clearAll();
        record.overlay(answer);
        return true;
    });
}

CallStatus LocalMgmtClient::getData(ManageableData& record, bool& result) {
    return exchangeRecord("getData", record, takeResultInto(result));
}

CallStatus LocalMgmtClient::setData(ManageableData& record, bool& result) {
    return exchangeRecord("setData", record, takeResultInto(result));
}

CallStatus LocalMgmtClient::findSchemaName(const std::string& tag, std::string& schemaName) {
    Method request("findSchemaName", Method::eRequest);
    request.addStringParameter("nodeId", Parameter::eIn, tag);
    return askText(request, "schemaName", schemaName);
}

CallStatus LocalMgmtClient::exportSchema(const std::string& schemaName, std::string& schemaXml) {
    Method request("exportSchema", Method::eRequest);
    request.addStringParameter("schemaName", Parameter::eIn, schemaName);
    return askText(request, "schemaXml", schemaXml);
}

CallStatus LocalMgmtClient::getSchema(const std::string& schemaName, ManageableData& record,
                                      bool& result) {
    Method request("getSchema", Method::eRequest);
    request.addStringParameter("schemaName", Parameter::eIn, schemaName);
    Method reply;
    if (const CallStatus status = callNamed(request, reply); status != CallStatus::eDone) {
        return status;
    }
    return takeFrom([&] {
        const bool known = reply.getBoolParameter("result", Parameter::eOut);
        const std::string& text = reply.getStringParameter("manageableData", Parameter::eOut);
        if (known && !record.deserialize(text)) {
            return false;
        }
        result = known;
        return true;
    });
}

// A call about the agent of this connection, answered with a "result".
CallStatus LocalMgmtClient::askForAgent(const Method& request, bool& result) {
    if (!m_session->hasAgent()) {
        return CallStatus::eNoAgent;
    }
    Method reply;
    if (const CallStatus status = callNamed(request, reply); status != CallStatus::eDone) {
        return status;
    }
    return takeFrom([&] {
        takeResultInto(result)(reply);
        return true;
    });
}

CallStatus LocalMgmtClient::registerManagementIdentity(const std::string& managementId, bool bulk,
                                                       bool& registered) {
    Method request("registerManagementIdentityBulkData", Method::eRequest);
    request.addStringParameter("managementId", Parameter::eIn, managementId);
    request.addBoolParameter("bulkDataManageable", Parameter::eIn, bulk);
    return askForAgent(request, registered);
}

CallStatus LocalMgmtClient::observeData(const std::string& tag, bool bulk, bool& observed) {
    Method request("observeDataBulkData", Method::eRequest);
    request.addStringParameter("nodeId", Parameter::eIn, tag);
    request.addBoolParameter("bulkDataManageable", Parameter::eIn, bulk);
    return askForAgent(request, observed);
}

CallStatus LocalMgmtClient::observeListData(const std::vector<std::string>& tags, bool& observed) {
    std::string list;
    Serializer::serialize(list, std::list<std::string>(tags.begin(), tags.end()));
    Method request("observeListDataBulkData", Method::eRequest);
    request.addStringParameter("rootIds", Parameter::eIn, list);
    return askForAgent(request, observed);
}

CallStatus LocalMgmtClient::stopObservingData(const std::string& tag, bool& stopped) {
    Method request("stopObservingData", Method::eRequest);
    request.addStringParameter("nodeId", Parameter::eIn, tag);
    return askForAgent(request, stopped);
}

CallStatus LocalMgmtClient::manageableDataChanged(ManageableData& record, int& observers) {
    return exchangeRecord("manageableDataChanged", record, [&observers](const Method& reply) {
        observers = reply.getIntParameter("numObservers", Parameter::eOut);
    });
}

CallStatus LocalMgmtClient::invalidateVCMSCache() {
    Method reply;
    return callNamed(Method("invalidateVCMSCache", Method::eRequest), reply);
}

CallStatus LocalMgmtClient::retrievePhoneBusyStatus(unsigned& mask) {
    int bits = 0;  // the 32 bits travel as an int
    const CallStatus status =
        askNumber(Method("retrievePhoneBusyStatus", Method::eRequest), "busyStatus", bits);
    if (status == CallStatus::eDone) {
        mask = static_cast<unsigned>(bits);
    }
    return status;
}

CallStatus LocalMgmtClient::sendBusyBits(const char* methodName, unsigned bits) {
    Method request(methodName, Method::eRequest);
    request.addIntParameter("busyStatus", Parameter::eIn, static_cast<int>(bits));
    Method reply;
    return callNamed(request, reply);
}

CallStatus LocalMgmtClient::setPhoneBusyStatus(unsigned bits) {
    return sendBusyBits("setPhoneBusyStatus", bits);
}

CallStatus LocalMgmtClient::clearPhoneBusyStatus(unsigned bits) {
    return sendBusyBits("clearPhoneBusyStatus", bits);
}

CallStatus LocalMgmtClient::getFileTypeMetadata(const std::string& fileType,
                                                FileTypeLimits& limits) {
    Method reply;
    if (const CallStatus status =
            callNamed(fileTypeRequest("getFileTypeMetadata", fileType), reply);
        status != CallStatus::eDone) {
        return status;
    }
    FileTypeLimits taken;
    const CallStatus status = takeFrom([&] { return takeLimits(m_protocol, reply, taken); });
    if (status == CallStatus::eDone) {
        limits = taken;
    }
    return status;
}

CallStatus LocalMgmtClient::getFileTypeCountLimit(const std::string& fileType, int& entries) {
    constexpr const char* kName = "getFileTypeCountLimit";
    return askNumber(fileTypeRequest(kName, fileType), kName, entries);
}

CallStatus LocalMgmtClient::getFileTypeNameLimit(const std::string& fileType, int& nameCharacters) {
    constexpr const char* kName = "getFileTypeNameLimit";
    return askNumber(fileTypeRequest(kName, fileType), kName, nameCharacters);
}

}  // namespace vireo
