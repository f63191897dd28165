#include "LocalMgmtClient.h"

#include <algorithm>
#include <utility>

#include "PeerConnection.h"
#include "messages/RpcAdapter.h"

namespace vireo {
namespace {

using std::chrono::milliseconds;

constexpr std::string_view kProtocol = "vireo_rpc";
constexpr std::string_view kInterface = "LocalMgmtIfc";
constexpr std::size_t kMaximumName = 255;
// Keeps deadlines within what a clock can count.
constexpr milliseconds kLongestTimeout = std::chrono::hours(24 * 365);

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
    const milliseconds timeout = std::min(options.timeout, kLongestTimeout);
    std::unique_ptr<PeerConnection> connection =
        PeerConnection::open(options.socketPath, options.channelName, timeout, error);
    if (!connection) {
        return nullptr;
    }
    return std::unique_ptr<LocalMgmtClient>(new LocalMgmtClient(std::move(connection), timeout));
}

LocalMgmtClient::LocalMgmtClient(std::unique_ptr<PeerConnection> connection, milliseconds timeout)
    : m_connection(std::move(connection)), m_timeout(timeout) {}

LocalMgmtClient::~LocalMgmtClient() = default;

const std::string& LocalMgmtClient::channelName() const {
    return m_connection->channelName();
}

std::string LocalMgmtClient::closeReason() const {
    const std::lock_guard lock(m_mutex);
    return m_connection->closeReason();
}

void LocalMgmtClient::setTimeout(milliseconds timeout) {
    const std::lock_guard lock(m_mutex);
    m_timeout = std::min(timeout, kLongestTimeout);
}

CallStatus LocalMgmtClient::callRaw(std::string_view protocol, std::string_view payload,
                                    std::string& replyPayload) {
    if (payload.size() > FrameCodec::kMaximumPayload || protocol.size() > kMaximumName) {
        return CallStatus::eTooLarge;
    }
    const std::lock_guard lock(m_mutex);
    std::string received;
    const CallStatus status = m_connection->exchange(
        protocol, kInterface, payload, PeerConnection::Clock::now() + m_timeout, received);
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
    RpcAdapter::encodeText(request, payload);
    std::string received;
    if (const CallStatus status = callRaw(kProtocol, payload, received);
        status != CallStatus::eDone) {
        return status;
    }
    Method decoded;
    if (!RpcAdapter::decodeText(received, decoded) || decoded.type() != Method::eResponse) {
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

CallStatus LocalMgmtClient::exchangeRecord(const char* methodName, ManageableData& record,
                                           bool& result) {
    Method request(methodName, Method::eRequest);
    request.addStringParameter("manageableData", Parameter::eInOut,
                               record.serialize(ManageableData::eWithoutRejections));
    Method reply;
    if (const CallStatus status = callNamed(request, reply); status != CallStatus::eDone) {
        return status;
    }
    return takeFrom([&] {
        const bool accepted = reply.getBoolParameter("result", Parameter::eOut);
        ManageableData answer;
        if (!answer.deserialize(reply.getStringParameter("manageableData", Parameter::eOut))) {
            return false;
        }
        // Not an assignment: the record stays bound to its dictionary.
        record.clearAll();
        record.overlay(answer);
        result = accepted;
        return true;
    });
}

CallStatus LocalMgmtClient::getData(ManageableData& record, bool& result) {
    return exchangeRecord("getData", record, result);
}

CallStatus LocalMgmtClient::setData(ManageableData& record, bool& result) {
    return exchangeRecord("setData", record, result);
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

CallStatus LocalMgmtClient::invalidateVCMSCache() {
    Method reply;
    return callNamed(Method("invalidateVCMSCache", Method::eRequest), reply);
}

}  // namespace vireo
