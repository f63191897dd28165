#include "Boundary.h"
#include "Visibility.h"
#include "check/CatalogueCheck.h"
#include "messages/LocalMgmtCallbackProxy.h"
#include "messages/LocalMgmtInvoker.h"
#include "messages/MgmtAgentProxy.h"
#include "messages/RemoteMgmtCallbackProxy.h"
#include "service/VireoClientMgmt.h"

// The framework finds these by name; each object belongs to the framework. Null when there is no
// memory for it.

extern "C" VIREO_API vireo::Service* createVireoClientMgmt() {
    return vireo::guarded("createVireoClientMgmt", static_cast<vireo::Service*>(nullptr),
                          [] { return new vireo::VireoClientMgmt(); });
}

extern "C" VIREO_API vireo::Proxy* createMgmtAgentProxy() {
    return vireo::guarded("createMgmtAgentProxy", static_cast<vireo::Proxy*>(nullptr),
                          [] { return new vireo::MgmtAgentProxy(); });
}

extern "C" VIREO_API vireo::Proxy* createLocalMgmtCallbackProxy() {
    return vireo::guarded("createLocalMgmtCallbackProxy", static_cast<vireo::Proxy*>(nullptr),
                          [] { return new vireo::LocalMgmtCallbackProxy(); });
}

extern "C" VIREO_API vireo::Proxy* createRemoteMgmtCallbackProxy() {
    return vireo::guarded("createRemoteMgmtCallbackProxy", static_cast<vireo::Proxy*>(nullptr),
                          [] { return new vireo::RemoteMgmtCallbackProxy(); });
}

extern "C" VIREO_API vireo::Invoker* createLocalMgmtInvoker() {
    return vireo::guarded("createLocalMgmtInvoker", static_cast<vireo::Invoker*>(nullptr),
                          [] { return new vireo::LocalMgmtInvoker(); });
}

extern "C" VIREO_API vireo::ConfigurationCheck* createConfigurationCheck() {
    return vireo::guarded("createConfigurationCheck",
                          static_cast<vireo::ConfigurationCheck*>(nullptr),
                          [] { return new vireo::CatalogueCheck(); });
}
