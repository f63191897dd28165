#pragma once

#include "RemoteMgmtCallbackIfc.h"
#include "service/Proxy.h"

namespace vireo {

/// A remote management client in another process. Everything is sent without waiting. Safe from
/// every thread; takes no lock.
class RemoteMgmtCallbackProxy : public Proxy, public RemoteMgmtCallbackIfc {
public:
    void initProxy(ProxyRequest& request) override { m_request = &request; }

    void informRemoteProgress(int progress, eRemoteOperationType type) override;
    void informRemoteWarning(eRemoteOperationType type) override;

private:
    ProxyRequest* m_request = nullptr;
};

}  // namespace vireo
