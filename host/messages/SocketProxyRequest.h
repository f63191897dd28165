#pragma once

#include <string>

#include "service/Proxy.h"

namespace vireo {

class MessageLoop;
class MgmtAgentIfc;
class PeerCalls;
class ServiceRegistry;

/// What a proxy sends: over the peer's socket, or, when the peer is an agent of this process, texts
/// straight to it. What it is only told waits for the message thread then, and comes in order.
class SocketProxyRequest : public ProxyRequest {
public:
    /// Both outlive this.
    SocketProxyRequest(MessageLoop& loop, const ServiceRegistry& services,
                       std::string interfaceName, std::string channel);

    const std::string& interface() const override { return m_interface; }
    const std::string& destinationChannelName() const override { return m_channel; }
    Service* findDirectService() override;
    void setProtocol(const std::string& protocol) override { m_protocol = protocol; }
    /// All that peers get are texts for agents or methods, told apart by their protocol.
    void setMsgType(int /*type*/) override {}
    bool sendAndWait(const std::string& message, std::string& reply, int timeoutMs) override;
    bool sendOneWay(const std::string& message) override;
    bool sendMethod(const Method& method) override;

private:
    MgmtAgentIfc* findDirectAgent();
    PeerCalls& calls();

    MessageLoop& m_loop;
    const ServiceRegistry& m_services;
    const std::string m_interface;
    const std::string m_channel;
    std::string m_protocol;
};

}  // namespace vireo
