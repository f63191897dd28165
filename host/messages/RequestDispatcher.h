#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "TextHash.h"
#include "messages/FrameResponse.h"

namespace vireo {

class Connection;
class Executable;
class Invoker;
struct Frame;

/// Hands requests and notifications to the invoker of the interface that they name, and sees to it
/// that every request gets exactly one reply. Used on the message thread.
class RequestDispatcher {
public:
    /// Messages to `interfaceName` go to `invoker` for `executable`. Neither is owned; both outlive
    /// the last dispatch. A later pair of the same name replaces the earlier one. Before the first
    /// dispatch only.
    void serve(std::string interfaceName, Invoker& invoker, Executable& executable);

    /// Handles one request or notification; its reply, if it wants one, is in the connection's
    /// output afterwards. Throws nothing.
    void dispatch(Connection& connection, const Frame& frame);
    /// The empty reply to a request that is not handled.
    void answerEmpty(Connection& connection, const Frame& frame);

private:
    struct Target {
        Invoker* invoker = nullptr;
        Executable* executable = nullptr;
    };

    void invoke(const Target& target, const Connection& connection, const Frame& frame);

    std::unordered_map<std::string, Target, TextHash, std::equal_to<>> m_targets;
    FrameResponse m_response;
};

}  // namespace vireo
