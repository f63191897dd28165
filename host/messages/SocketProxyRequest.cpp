#include "messages/SocketProxyRequest.h"

#include <utility>

#include "MgmtAgentIfc.h"
#include "messages/AgentText.h"
#include "messages/MessageLoop.h"
#include "messages/RpcAdapter.h"
#include "runtime/ServiceRegistry.h"
#include "service/Service.h"

namespace vireo {

SocketProxyRequest::SocketProxyRequest(MessageLoop& loop, const ServiceRegistry& services,
                                       std::string interfaceName, std::string channel)
    : m_loop(loop),
      m_services(services),
      m_interface(std::move(interfaceName)),
      m_channel(std::move(channel)),
      m_protocol(VireoProtocols::DEFAULT) {}

Service* SocketProxyRequest::findDirectService() {
    return m_services.findOnChannel(m_interface, m_channel);
}

MgmtAgentIfc* SocketProxyRequest::findDirectAgent() {
    return dynamic_cast<MgmtAgentIfc*>(findDirectService());
}

PeerCalls& SocketProxyRequest::calls() {
    return m_loop.calls();
}

bool SocketProxyRequest::sendAndWait(const std::string& message, std::string& reply,
                                     int timeoutMs) {
    if (MgmtAgentIfc* agent = findDirectAgent()) {
        AgentText::serve(*agent, message, reply);
        return true;
    }
    return calls().call({m_channel, m_protocol, m_interface}, message,
                        std::chrono::milliseconds(timeoutMs), reply);
}

bool SocketProxyRequest::sendOneWay(const std::string& message) {
    if (MgmtAgentIfc* agent = findDirectAgent()) {
        m_loop.postTask([agent, message] {
            std::string ignored;
            AgentText::serve(*agent, message, ignored);
        });
        return true;
    }
    return calls().notify({m_channel, m_protocol, m_interface}, message);
}

bool SocketProxyRequest::sendMethod(const Method& method) {
    std::string text;
    RpcAdapter::encodeText(method, text);
    return calls().notify({m_channel, VireoProtocols::DEFAULT, m_interface}, text);
}

}  // namespace vireo
