#pragma once

#include <string>
#include <string_view>
#include <typeinfo>

#include "service/Invoker.h"

namespace vireo {

class GroupedWrites;
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
    /// The interfaces of an executable, null where it does not have them.
    struct Target {
        LocalMgmtIfc* service = nullptr;
        GroupedWrites* grouped = nullptr;
    };

    Target targetOf(Executable* executable);
    bool handle(Executable* executable, const char* message, int length, InvokerResponse& response,
                std::string& reply);
    bool callMethod(const Target& target, InvokerResponse& response, ProtocolAdapter& adapter,
                    std::string_view message, std::string& reply);
    void finishGroup(const Target& target);

    FrameworkContext* m_context = nullptr;
    bool m_isGroupOpen = false;
    Executable* m_lastExecutable = nullptr;  ///< what `m_lastTarget` was found for
    const std::type_info* m_lastType = nullptr;
    Target m_lastTarget;
};

}  // namespace vireo
