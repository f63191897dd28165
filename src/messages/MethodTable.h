#pragma once

#include <string>

#include "service/Method.h"

namespace vireo {

class FrameworkContext;
class LocalMgmtIfc;

/// One call that came by message. Handlers read the request, call the service and fill the reply.
struct MethodCall {
    LocalMgmtIfc& service;
    const std::string& protocol;
    FrameworkContext& framework;
    const Method& request;
    Method reply;
};

/// One method of the local management interface. Handlers let `MethodError` pass.
struct MethodRow {
    const char* name;
    void (*handler)(MethodCall& call);
};

/// The row of that name, or null. Rows are compared in table order, exactly.
const MethodRow* findMethod(const std::string& name);

}  // namespace vireo
