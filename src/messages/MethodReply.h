#pragma once

#include <string>

namespace vireo {

class InvokerResponse;
class Method;
class ProtocolAdapter;

/// The way of a reply from the method to the framework.
class MethodReply {
public:
    /// Appends the reply to `text`, and nothing, with an error line, when the protocol cannot carry
    /// it.
    static void encode(ProtocolAdapter& adapter, const Method& reply, std::string& text);
    static void send(InvokerResponse& response, const std::string& text);
};

}  // namespace vireo
