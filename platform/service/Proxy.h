#pragma once

#include <atomic>
#include <string>

#include "Visibility.h"
#include "service/Executable.h"

namespace vireo {

class Context;
class Method;
class Service;

/// Addresses one interface of one peer and carries what a proxy sends there. The framework owns it;
/// it lives as long as the proxy. Safe from every thread.
class VIREO_API ProxyRequest {
public:
    /// How long a synchronous send waits when nothing else is said. Milliseconds; set by the host
    /// before it serves.
    static std::atomic<int> mDefaultTimeout;  // NOLINT(readability-identifier-naming)

    virtual ~ProxyRequest() = default;
    /// The interface of the peer that is addressed, such as "MgmtAgentIfc".
    virtual const std::string& interface() const = 0;
    /// The channel name of the peer. A process that comes back under the name is the same peer.
    virtual const std::string& destinationChannelName() const = 0;
    /// The service of this process that offers `interface()` under `destinationChannelName()`, or
    /// null. Not owned; it lives as long as the context.
    virtual Service* findDirectService() = 0;

    /// The protocol of later texts. Called once, before the first send.
    virtual void setProtocol(const std::string& protocol) = 0;
    /// The framework's kind of message: 4 is a text for an agent. Called once, before the first
    /// send.
    virtual void setMsgType(int type) = 0;

    /// Sends `message` and waits at most `timeoutMs` for the reply. `reply` is what came; empty
    /// when nothing came in time, when the peer is not there, or when it went. False then.
    virtual bool sendAndWait(const std::string& message, std::string& reply, int timeoutMs) = 0;
    /// Sends `message` without waiting. False when the peer is not there.
    virtual bool sendOneWay(const std::string& message) = 0;
    /// Sends `method` without waiting, in the framework's default protocol.
    virtual bool sendMethod(const Method& method) = 0;
};

/// The client side of one interface of one peer. Created by an exported factory, initialised once,
/// then called from any thread; owned by the framework, which keeps it to its own end.
class VIREO_API Proxy : public Executable {
public:
    virtual void init(Context& /*context*/) {}
    virtual void shutdown() {}
    /// `request` outlives the proxy.
    virtual void initProxy(ProxyRequest& request) = 0;
};

}  // namespace vireo
