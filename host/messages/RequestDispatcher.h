#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

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
    /// Whether replies are postponed.
    bool hasPostponed() const { return !m_postponed.empty(); }
    /// Has all postponed replies given. Answers whose they were. May be called while it runs.
    /// Throws nothing.
    std::vector<std::shared_ptr<Connection>> endTurn();
    /// The empty reply to a request that is not handled.
    static void answerEmpty(Connection& connection, const Frame& frame);

    /// The channel name of the peer whose message is being handled; of the innermost one, when the
    /// handling of one waits for a peer and another message is handled meanwhile. Empty else.
    const std::string& currentChannel() const;

private:
    struct Target {
        Invoker* invoker = nullptr;
        Executable* executable = nullptr;
        bool hasPostponed = false;
    };

    /// One message that is being handled. The objects stay, so that their texts keep their memory.
    struct Level {
        FrameResponse response;
        const Connection* peer = nullptr;
    };

    static void endTurn(const Target& target);
    std::vector<std::shared_ptr<Connection>> takeServed();
    static void invoke(const Target& target, Level& level, const std::string& interfaceName,
                       std::string_view payload);

    std::unordered_map<std::string, Target, TextHash, std::equal_to<>> m_targets;
    std::vector<std::unique_ptr<Level>> m_levels;
    std::size_t m_depth = 0;                               ///< how many of them are in use
    std::size_t m_endDepth = 0;                            ///< calls of `endTurn` that run
    std::vector<std::shared_ptr<Connection>> m_postponed;  ///< a reply each
};

}  // namespace vireo
