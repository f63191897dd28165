#pragma once

#include <string>

#include "LocalMgmtCallbackIfc.h"
#include "service/Proxy.h"

namespace vireo {

/// A client in another process that started a download. Progress and completion are sent without
/// waiting. Safe from every thread; takes no lock.
class LocalMgmtCallbackProxy : public Proxy, public LocalMgmtCallbackIfc {
public:
    void initProxy(ProxyRequest& request) override;

    /// Asks and waits for the answer. Only "true" allows the shutdown; no answer refuses it.
    bool requestShutdown() override;
    /// Whether the message was sent.
    bool informDownloadProgress(int progress, std::string filepath) override;
    bool informDownloadCompletion(std::string filepath) override;

private:
    ProxyRequest* m_request = nullptr;
};

}  // namespace vireo
