#pragma once

#include <memory>
#include <string>

#include "Visibility.h"

namespace vireo {

class Executable;
class ProtocolAdapter;

/// The handle through which an invoker answers one message. Used on the message thread, valid
/// until `handleMessage` returns; what `postpone` answers, until it is destroyed.
class VIREO_API InvokerResponse {
public:
    virtual ~InvokerResponse() = default;
    /// The protocol name of the incoming message.
    virtual const std::string& protocol() const = 0;
    /// Sends the payload set before (an empty reply when none was set). Only the first call counts.
    virtual void send() = 0;
    /// Copies the reply's bytes.
    virtual void setPayload(const char* text, int length) = 0;
    /// Hands over the answer, to be sent by `Invoker::endTurn` at the latest. Until then the peer's
    /// further messages wait. This handle sends nothing any more; the other one sends the empty
    /// reply when it is destroyed before it sent one. Null when the answer cannot wait, or was sent
    /// already: nothing has changed then.
    virtual std::shared_ptr<InvokerResponse> postpone() { return nullptr; }
};

/// What the framework offers to invokers. Outlives them.
class VIREO_API FrameworkContext {
public:
    virtual ~FrameworkContext() = default;
    /// The adapter registered for `protocol`, or null. Owned by the framework.
    virtual ProtocolAdapter* findProtocolAdapter(const std::string& protocol) = 0;
    /// The proxy for `interfaceName` of the peer that sent the message that is being handled. The
    /// same object for the same channel name and interface, as long as the framework lives; owned
    /// by the framework. Null outside of `handleMessage`, and for an interface that has no proxies.
    virtual Executable* findPeerProxy(const std::string& interfaceName) = 0;
};

/// The server side of one interface of a service. Created by an exported factory, initialised once,
/// then called for every message on the message thread, destroyed by the framework.
class VIREO_API Invoker {
public:
    virtual ~Invoker() = default;
    virtual void initInvoker(FrameworkContext* context) = 0;
    /// Handles one message of exactly `length` bytes (not NUL-terminated) for the service object
    /// `executable` and answers it with exactly one `response->send()`, now or, when the answer was
    /// postponed, later. Throws nothing.
    virtual void handleMessage(Executable* executable, const char* message, int length,
                               InvokerResponse* response) = 0;
    /// The messages that came together are handled, or the message thread is about to wait for a
    /// peer: postponed answers are to be sent now. Called when there are some, with the service
    /// object of `handleMessage`, on the message thread; also from within another `handleMessage`
    /// or `endTurn` that calls a peer. Throws nothing.
    virtual void endTurn([[maybe_unused]] Executable* executable) {}
};

}  // namespace vireo
