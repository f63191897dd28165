#pragma once

#include <string>
#include <string_view>

#include "service/Invoker.h"

namespace vireo {

class LocalMgmtIfc;

/// The server side of the local management interface: decodes each message, calls the service and
/// hands exactly one reply to the framework. Keeps nothing between messages.
class LocalMgmtInvoker : public Invoker {
public:
    void initInvoker(FrameworkContext* context) override;
    void handleMessage(Executable* executable, const char* message, int length,
                       InvokerResponse* response) override;

private:
    void handle(Executable* executable, const char* message, int length,
                const InvokerResponse& response, std::string& reply);
    void callMethod(LocalMgmtIfc& service, const std::string& protocol, ProtocolAdapter& adapter,
                    std::string_view message, std::string& reply);

    FrameworkContext* m_context = nullptr;
};

}  // namespace vireo
