// The calls of LocalMgmtClient that are about maintenance.
#include <string>

#include "LocalMgmtClient.h"
#include "MethodCalls.h"

namespace vireo {

CallStatus LocalMgmtClient::performFactoryReset(const std::string& password, bool& rebootStarted) {
    Method request("performFactoryReset", Method::eRequest);
    request.addStringParameter("password", Parameter::eIn, password);
    return m_calls->askBool(request, "result", rebootStarted);
}

CallStatus LocalMgmtClient::performReboot(const std::string& reason, bool& started) {
    Method request("performReboot", Method::eRequest);
    request.addStringParameter("rebootReason", Parameter::eIn, reason);
    return m_calls->askBool(request, "result", started);
}

CallStatus LocalMgmtClient::clearAllUserData(bool& lastOwnerDid) {
    return m_calls->askBool(Method("clearAllUserData", Method::eRequest), "result", lastOwnerDid);
}

}  // namespace vireo
