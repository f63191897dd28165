#pragma once

#include <string>
#include <string_view>

#include "service/Invoker.h"

namespace vireo {

class LocalMgmtIfc;

/// The server side of the local management interface: decodes each message, calls the service and
/// hands exactly one reply to the framework. Keeps nothing between messages but whether the service
/// has writes that are committed at the end of the turn.
class LocalMgmtInvoker : public Invoker {
public:
    void initInvoker(FrameworkContext* context) override;
    void handleMessage(Executable* executable, const char* message, int length,
                       InvokerResponse* response) override;
    void endTurn(Executable* executable) override;

private:
    bool handle(Executable* executable, const char* message, int length, InvokerResponse& response,
                std::string& reply);
    bool callMethod(LocalMgmtIfc& service, InvokerResponse& response, ProtocolAdapter& adapter,
                    std::string_view message, std::string& reply);
    void finishGroup(LocalMgmtIfc& service);

    FrameworkContext* m_context = nullptr;
    bool m_isGroupOpen = false;
};

}  // namespace vireo
