#include "messages/RemoteMgmtCallbackProxy.h"

#include "service/Method.h"

namespace vireo {

void RemoteMgmtCallbackProxy::informRemoteProgress(int progress, eRemoteOperationType type) {
    Method method("informRemoteProgress", Method::eRequest);
    method.addIntParameter("progress", Parameter::eIn, progress);
    method.addIntParameter("operationType", Parameter::eIn, type);
    m_request->sendMethod(method);
}

void RemoteMgmtCallbackProxy::informRemoteWarning(eRemoteOperationType type) {
    Method method("informRemoteWarning", Method::eRequest);
    method.addIntParameter("operationType", Parameter::eIn, type);
    m_request->sendMethod(method);
}

}  // namespace vireo
