#pragma once

#include <string_view>

#include "service/Method.h"

namespace vireo {

class FrameworkContext;
class GroupedWrites;
class InvokerResponse;
class LocalMgmtIfc;
class ProtocolAdapter;

/// One call that came by message. Handlers read the request, call the service and fill the reply.
struct MethodCall {
    LocalMgmtIfc& service;
    GroupedWrites* grouped = nullptr;  ///< of the same service; null when it has none
    const std::string& protocol;
    FrameworkContext& framework;
    const Method& request;
    Method reply;
    ProtocolAdapter& adapter;
    InvokerResponse& response;
    bool isGroupOpen = false;  ///< writes of earlier messages are not committed yet
    bool isPostponed = false;  ///< the reply is given later, `reply` does not count
};

/// One method of the local management interface. Handlers let `MethodError` pass.
struct MethodRow {
    std::string_view name;
    void (*handler)(MethodCall& call);
    /// Whether it sees itself to the writes that are not committed yet; else they are committed
    /// first.
    bool copesWithGroup = false;
};

/// The row of that name, or null. Rows are compared in table order, exactly.
const MethodRow* findMethod(std::string_view name);

}  // namespace vireo
