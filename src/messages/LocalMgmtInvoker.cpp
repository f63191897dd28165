#include "messages/LocalMgmtInvoker.h"

#include "Boundary.h"
#include "LocalMgmtIfc.h"
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
    guardedMessage(kComponent, [&] { handle(executable, message, length, *response, reply); });
    response->setPayload(reply.data(), static_cast<int>(reply.size()));
    response->send();
}

void LocalMgmtInvoker::handle(Executable* executable, const char* message, int length,
                              const InvokerResponse& response, std::string& reply) {
    VIREO_LOG(kComponent, kLogInfo, "handleMessage:msg = %.*s", length, message);
    auto* service = dynamic_cast<LocalMgmtIfc*>(executable);
    if (service == nullptr) {
        VIREO_LOG(kComponent, kLogError, "Could not cast executable to LocalMgmtIfc.");
        return;
    }
    const std::string& protocol = response.protocol();
    ProtocolAdapter* adapter =
        m_context != nullptr ? m_context->findProtocolAdapter(protocol) : nullptr;
    if (adapter == nullptr) {
        VIREO_LOG(kComponent, kLogError, "Could not find PA for \"%s\"\n", protocol.c_str());
        return;
    }
    callMethod(*service, protocol, *adapter, {message, static_cast<std::size_t>(length)}, reply);
}

void LocalMgmtInvoker::callMethod(LocalMgmtIfc& service, const std::string& protocol,
                                  ProtocolAdapter& adapter, std::string_view message,
                                  std::string& reply) {
    Method request;
    if (!adapter.decodeFrom(message, request)) {
        VIREO_LOG(kComponent, kLogWarning, "message of %zu bytes is no method in \"%s\"",
                  message.size(), protocol.c_str());
    }
    const MethodRow* row = findMethod(request.name());
    if (row == nullptr) {
        VIREO_LOG(kComponent, kLogDebug, "Invalid Message, %s", request.name().c_str());
        return;
    }
    MethodCall call{service, protocol, *m_context, request,
                    Method(request.name(), Method::eResponse)};
    call.reply.reserveParameters(kMostReplyParameters);
    row->handler(call);
    if (!adapter.encodeTo(call.reply, reply)) {
        VIREO_LOG(kComponent, kLogError, "the reply to \"%s\" cannot be encoded",
                  request.name().c_str());
    }
}

}  // namespace vireo
