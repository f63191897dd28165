#include "messages/MethodReply.h"

#include "LogMacros.h"
#include "service/Invoker.h"
#include "service/Method.h"
#include "service/ProtocolAdapter.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "LocalMgmtInvoker";

}  // namespace

void MethodReply::encode(ProtocolAdapter& adapter, const Method& reply, std::string& text) {
    if (!adapter.encodeTo(reply, text)) {
        VIREO_LOG(kComponent, kLogError, "the reply to \"%s\" cannot be encoded",
                  reply.name().c_str());
    }
}

void MethodReply::send(InvokerResponse& response, const std::string& text) {
    response.setPayload(text.data(), static_cast<int>(text.size()));
    response.send();
}

}  // namespace vireo
