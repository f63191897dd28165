#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "CallStatus.h"
#include "LocalMgmtClient.h"
#include "service/Method.h"

namespace vireo {

class ClientSession;
class ManageableData;

/// Calls of the interface's methods over a session, in one protocol. Out parameters are changed by
/// eDone only. Safe from every thread. Private to the library.
class MethodCalls {
public:
    using Protocol = LocalMgmtClient::Protocol;
    /// Takes the rest of a reply that carries a record. May throw `MethodError`.
    using TakeResult = std::function<void(const Method& reply)>;

    /// The session outlives this.
    MethodCalls(ClientSession& session, Protocol protocol)
        : m_session(session), m_protocol(protocol) {}

    Protocol protocol() const { return m_protocol; }

    // As `LocalMgmtClient` has them.
    CallStatus call(const Method& request, Method& reply);
    CallStatus callRaw(std::string_view protocol, std::string_view payload,
                       std::string& replyPayload);

    /// A call whose reply bears the name of its request.
    CallStatus callNamed(const Method& request, Method& reply);
    /// A call whose reply bears another name.
    CallStatus callNamed(const Method& request, std::string_view replyName, Method& reply);
    /// A call that is answered with the parameter `answer`.
    CallStatus askText(const Method& request, const char* answer, std::string& text);
    CallStatus askNumber(const Method& request, const char* answer, int& number);
    CallStatus askBool(const Method& request, const char* answer, bool& value);
    /// Sends the record and takes the one of the reply in its place.
    CallStatus exchangeRecord(const char* methodName, ManageableData& record,
                              const TakeResult& takeResult);

    /// Takes values out of a reply; one that lacks them is malformed.
    template <class Take>
    static CallStatus takeFrom(Take&& take) {
        try {
            return take() ? CallStatus::eDone : CallStatus::eMalformedReply;
        } catch (const MethodError&) {
            return CallStatus::eMalformedReply;
        }
    }

private:
    ClientSession& m_session;
    const Protocol m_protocol;
};

}  // namespace vireo
