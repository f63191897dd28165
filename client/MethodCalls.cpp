#include "MethodCalls.h"

#include <utility>

#include "ClientSession.h"
#include "data/ManageableData.h"
#include "messages/FrameCodec.h"
#include "messages/RpcAdapter.h"
#include "messages/ServiceXmlAdapter.h"

namespace vireo {
namespace {

constexpr std::string_view kInterface = "LocalMgmtIfc";
constexpr std::size_t kLongestProtocolName = 255;

bool encode(MethodCalls::Protocol protocol, const Method& method, std::string& payload) {
    if (protocol == MethodCalls::Protocol::eXml) {
        return ServiceXmlAdapter::encodeText(method, payload);
    }
    RpcAdapter::encodeText(method, payload);
    return true;
}

bool decode(MethodCalls::Protocol protocol, std::string_view payload, Method& method) {
    return protocol == MethodCalls::Protocol::eXml ? ServiceXmlAdapter::decodeText(payload, method)
                                                   : RpcAdapter::decodeText(payload, method);
}

}  // namespace

CallStatus MethodCalls::callRaw(std::string_view protocol, std::string_view payload,
                                std::string& replyPayload) {
    if (payload.size() > FrameCodec::kMaximumPayload || protocol.size() > kLongestProtocolName) {
        return CallStatus::eTooLarge;
    }
    std::string received;
    const CallStatus status = m_session.call(protocol, kInterface, payload, received);
    if (status != CallStatus::eDone) {
        return status;
    }
    if (received.empty()) {
        return CallStatus::eEmptyReply;
    }
    replyPayload = std::move(received);
    return CallStatus::eDone;
}

CallStatus MethodCalls::call(const Method& request, Method& reply) {
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

CallStatus MethodCalls::callNamed(const Method& request, Method& reply) {
    return callNamed(request, request.name(), reply);
}

CallStatus MethodCalls::callNamed(const Method& request, std::string_view replyName,
                                  Method& reply) {
    const CallStatus status = call(request, reply);
    if (status == CallStatus::eDone && reply.name() != replyName) {
        return CallStatus::eMalformedReply;
    }
    return status;
}

CallStatus MethodCalls::askText(const Method& request, const char* answer, std::string& text) {
    Method reply;
    if (const CallStatus status = callNamed(request, reply); status != CallStatus::eDone) {
        return status;
    }
    return takeFrom([&] {
        text = reply.getStringParameter(answer, Parameter::eOut);
        return true;
    });
}

CallStatus MethodCalls::askNumber(const Method& request, const char* answer, int& number) {
    Method reply;
    if (const CallStatus status = callNamed(request, reply); status != CallStatus::eDone) {
        return status;
    }
    return takeFrom([&] {
        number = reply.getIntParameter(answer, Parameter::eOut);
        return true;
    });
}

CallStatus MethodCalls::askBool(const Method& request, const char* answer, bool& value) {
    Method reply;
    if (const CallStatus status = callNamed(request, reply); status != CallStatus::eDone) {
        return status;
    }
    return takeFrom([&] {
        value = reply.getBoolParameter(answer, Parameter::eOut);
        return true;
    });
}

CallStatus MethodCalls::exchangeRecord(const char* methodName, ManageableData& record,
                                       const TakeResult& takeResult) {
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
        record.overlay(std::move(answer));
        return true;
    });
}

}  // namespace vireo
