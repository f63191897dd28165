#include "messages/LocalMgmtInvoker.h"

#include "Boundary.h"
#include "LocalMgmtIfc.h"
#include "items/GroupedWrites.h"
#include "messages/MethodReply.h"
#include "messages/MethodTable.h"
#include "service/Executable.h"
#include "service/Method.h"
#include "service/ProtocolAdapter.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "LocalMgmtInvoker";
constexpr std::size_t kMostReplyParameters = 2;

}  // namespace

void LocalMgmtInvoker::initInvoker(FrameworkContext* context) {
    m_context = context;
    VIREO_LOG(kComponent, kLogInfo, "invoker initialised");
}

void LocalMgmtInvoker::handleMessage(Executable* executable, const char* message, int length,
                                     InvokerResponse* response) {
    std::string reply;
    bool isPostponed = false;
    guardedMessage(kComponent,
                   [&] { isPostponed = handle(executable, message, length, *response, reply); });
    if (!isPostponed) {
        MethodReply::send(*response, reply);
    }
}

void LocalMgmtInvoker::endTurn(Executable* executable) {
    finishGroup(targetOf(executable));
}

// Also while it is being finished: an observer that calls a peer has the rest answered first.
void LocalMgmtInvoker::finishGroup(const Target& target) {
    m_isGroupOpen = false;
    if (target.grouped != nullptr) {
        target.grouped->finishGroup();
    }
}

// Almost always the same object as before. Two casts take as long as a tenth of a read.
LocalMgmtInvoker::Target LocalMgmtInvoker::targetOf(Executable* executable) {
    if (executable == nullptr) {
        return {};
    }
    const std::type_info& type = typeid(*executable);
    if (executable != m_lastExecutable || type != *m_lastType) {
        m_lastTarget = {dynamic_cast<LocalMgmtIfc*>(executable),
                        dynamic_cast<GroupedWrites*>(executable)};
        m_lastExecutable = executable;
        m_lastType = &type;
    }
    return m_lastTarget;
}

/// Whether the reply is given later.
bool LocalMgmtInvoker::handle(Executable* executable, const char* message, int length,
                              InvokerResponse& response, std::string& reply) {
    VIREO_LOG(kComponent, kLogInfo, "handleMessage:msg = %.*s", length, message);
    const Target target = targetOf(executable);
    if (target.service == nullptr) {
        VIREO_LOG(kComponent, kLogError, "Could not cast executable to LocalMgmtIfc.");
        return false;
    }
    const std::string& protocol = response.protocol();
    ProtocolAdapter* adapter =
        m_context != nullptr ? m_context->findProtocolAdapter(protocol) : nullptr;
    if (adapter == nullptr) {
        VIREO_LOG(kComponent, kLogError, "Could not find PA for \"%s\"\n", protocol.c_str());
        return false;
    }
    return callMethod(target, response, *adapter, {message, static_cast<std::size_t>(length)},
                      reply);
}

bool LocalMgmtInvoker::callMethod(const Target& target, InvokerResponse& response,
                                  ProtocolAdapter& adapter, std::string_view message,
                                  std::string& reply) {
    const std::string& protocol = response.protocol();
    Method request;
    if (!adapter.decodeFrom(message, request)) {
        VIREO_LOG(kComponent, kLogWarning, "message of %zu bytes is no method in \"%s\"",
                  message.size(), protocol.c_str());
    }
    const MethodRow* row = findMethod(request.name());
    if (row == nullptr) {
        VIREO_LOG(kComponent, kLogDebug, "Invalid Message, %s", request.name().c_str());
        return false;
    }
    if (m_isGroupOpen && !row->copesWithGroup) {
        finishGroup(target);  // it may wait for something, or look at the items
    }
    MethodCall call{.service = *target.service,
                    .grouped = target.grouped,
                    .protocol = protocol,
                    .framework = *m_context,
                    .request = request,
                    .reply = Method(request.name(), Method::eResponse),
                    .adapter = adapter,
                    .response = response,
                    .isGroupOpen = m_isGroupOpen};
    call.reply.reserveParameters(kMostReplyParameters);
    row->handler(call);
    if (call.isPostponed) {
        m_isGroupOpen = true;
        return true;
    }
    MethodReply::encode(adapter, call.reply, reply);
    return false;
}

}  // namespace vireo
