#include "LocalMgmtClient.h"

#include <charconv>
#include <list>
#include <system_error>
#include <utility>

#include "ClientSession.h"
#include "MethodCalls.h"
#include "service/ClientUtils.h"
#include "service/Serializer.h"

namespace vireo {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t kMaximumName = 255;

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
        {options.socketPath, options.channelName, options.timeout, options.agent, options.callback},
        error);
    if (!session) {
        return nullptr;
    }
    return std::unique_ptr<LocalMgmtClient>(
        new LocalMgmtClient(std::move(session), options.protocol));
}

LocalMgmtClient::LocalMgmtClient(std::unique_ptr<ClientSession> session, Protocol protocol)
    : m_calls(std::make_unique<MethodCalls>(*session, protocol)), m_session(std::move(session)) {}

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

CallStatus LocalMgmtClient::call(const Method& request, Method& reply) {
    return m_calls->call(request, reply);
}

CallStatus LocalMgmtClient::callRaw(std::string_view protocol, std::string_view payload,
                                    std::string& replyPayload) {
    return m_calls->callRaw(protocol, payload, replyPayload);
}

CallStatus LocalMgmtClient::getData(ManageableData& record, bool& result) {
    return m_calls->exchangeRecord("getData", record, takeResultInto(result));
}

CallStatus LocalMgmtClient::setData(ManageableData& record, bool& result) {
    return m_calls->exchangeRecord("setData", record, takeResultInto(result));
}

CallStatus LocalMgmtClient::findSchemaName(const std::string& tag, std::string& schemaName) {
    Method request("findSchemaName", Method::eRequest);
    request.addStringParameter("nodeId", Parameter::eIn, tag);
    return m_calls->askText(request, "schemaName", schemaName);
}

CallStatus LocalMgmtClient::exportSchema(const std::string& schemaName, std::string& schemaXml) {
    Method request("exportSchema", Method::eRequest);
    request.addStringParameter("schemaName", Parameter::eIn, schemaName);
    return m_calls->askText(request, "schemaXml", schemaXml);
}

CallStatus LocalMgmtClient::getSchema(const std::string& schemaName, ManageableData& record,
                                      bool& result) {
    Method request("getSchema", Method::eRequest);
    request.addStringParameter("schemaName", Parameter::eIn, schemaName);
    Method reply;
    if (const CallStatus status = m_calls->callNamed(request, reply); status != CallStatus::eDone) {
        return status;
    }
    return MethodCalls::takeFrom([&] {
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
    return m_calls->askBool(request, "result", result);
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
    return m_calls->exchangeRecord(
        "manageableDataChanged", record, [&observers](const Method& reply) {
            observers = reply.getIntParameter("numObservers", Parameter::eOut);
        });
}

CallStatus LocalMgmtClient::invalidateVCMSCache() {
    Method reply;
    return m_calls->callNamed(Method("invalidateVCMSCache", Method::eRequest), reply);
}

CallStatus LocalMgmtClient::retrievePhoneBusyStatus(unsigned& mask) {
    int bits = 0;  // the 32 bits travel as an int
    const CallStatus status =
        m_calls->askNumber(Method("retrievePhoneBusyStatus", Method::eRequest), "busyStatus", bits);
    if (status == CallStatus::eDone) {
        mask = static_cast<unsigned>(bits);
    }
    return status;
}

CallStatus LocalMgmtClient::sendBusyBits(const char* methodName, unsigned bits) {
    Method request(methodName, Method::eRequest);
    request.addIntParameter("busyStatus", Parameter::eIn, static_cast<int>(bits));
    Method reply;
    return m_calls->callNamed(request, reply);
}

CallStatus LocalMgmtClient::setPhoneBusyStatus(unsigned bits) {
    return sendBusyBits("setPhoneBusyStatus", bits);
}

CallStatus LocalMgmtClient::clearPhoneBusyStatus(unsigned bits) {
    return sendBusyBits("clearPhoneBusyStatus", bits);
}

CallStatus LocalMgmtClient::raiseGenericTrap(LocalMgmtIfc::TrapDest dest, int trap, bool& sent) {
    Method request("raiseGenericTrap", Method::eRequest);
    request.addIntParameter("dest", Parameter::eIn, dest);
    request.addIntParameter("trapNo", Parameter::eIn, trap);
    return m_calls->askBool(request, "result", sent);
}

CallStatus LocalMgmtClient::raiseSpecificTrap(LocalMgmtIfc::TrapDest dest,
                                              const std::string& trapText, bool& sent) {
    Method request("raiseSpecificTrap", Method::eRequest);
    request.addIntParameter("dest", Parameter::eIn, dest);
    request.addStringParameter("SNMPTrapData", Parameter::eIn, trapText);
    return m_calls->askBool(request, "result", sent);
}

CallStatus LocalMgmtClient::getFileTypeMetadata(const std::string& fileType,
                                                FileTypeLimits& limits) {
    Method reply;
    if (const CallStatus status =
            m_calls->callNamed(fileTypeRequest("getFileTypeMetadata", fileType), reply);
        status != CallStatus::eDone) {
        return status;
    }
    FileTypeLimits taken;
    const CallStatus status =
        MethodCalls::takeFrom([&] { return takeLimits(m_calls->protocol(), reply, taken); });
    if (status == CallStatus::eDone) {
        limits = taken;
    }
    return status;
}

CallStatus LocalMgmtClient::getFileTypeCountLimit(const std::string& fileType, int& entries) {
    constexpr const char* kName = "getFileTypeCountLimit";
    return m_calls->askNumber(fileTypeRequest(kName, fileType), kName, entries);
}

CallStatus LocalMgmtClient::getFileTypeNameLimit(const std::string& fileType, int& nameCharacters) {
    constexpr const char* kName = "getFileTypeNameLimit";
    return m_calls->askNumber(fileTypeRequest(kName, fileType), kName, nameCharacters);
}

}  // namespace vireo
