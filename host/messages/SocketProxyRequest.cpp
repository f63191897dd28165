#include "messages/SocketProxyRequest.h"

#include <utility>

#include "messages/PeerCalls.h"
#include "messages/RpcAdapter.h"
#include "runtime/ServiceRegistry.h"

namespace vireo {

SocketProxyRequest::SocketProxyRequest(PeerCalls& calls, const ServiceRegistry& services,
                                       std::string interfaceName, std::string channel)
    : m_calls(calls),
      m_services(services),
      m_interface(std::move(interfaceName)),
      m_channel(std::move(channel)),
      m_protocol(VireoProtocols::DEFAULT) {}

Service* SocketProxyRequest::findDirectService() {
    return m_services.findOnChannel(m_interface, m_channel);
}

bool SocketProxyRequest::sendAndWait(const std::string& message, std::string& reply,
                                     int timeoutMs) {
    return m_calls.call({m_channel, m_protocol, m_interface}, message,
                        std::chrono::milliseconds(timeoutMs), reply);
}

bool SocketProxyRequest::sendOneWay(const std::string& message) {
    return m_calls.notify({m_channel, m_protocol, m_interface}, message);
}

bool SocketProxyRequest::sendMethod(const Method& method) {
    std::string text;
    RpcAdapter::encodeText(method, text);
    return m_calls.notify({m_channel, VireoProtocols::DEFAULT, m_interface}, text);
}

}  // namespace vireo
