#pragma once

#include <string>
#include <string_view>

namespace vireo {

class MgmtAgentIfc;

/// An agent's side of the protocol "vireo_text".
///
///   getData:<record>                 reads items of the agent
///   setData:<record>                 writes them
///   manageableDataChanged:<record>   tells it of a change
///   resetUserData:                   makes it forget what belongs to the user
///
/// Stateless, safe from every thread.
class AgentText {
public:
    /// The interface that such messages are for.
    static constexpr std::string_view kInterface = "MgmtAgentIfc";

    /// Calls `agent` as `message` says, and replaces `reply` by the answer: the command word as it
    /// came, a colon, what the agent answered as a `Serializer` bool, and the record as the agent
    /// left it. A message that is not understood, and an agent that throws, which is logged, are
    /// answered with false and an empty record.
    static void serve(MgmtAgentIfc& agent, std::string_view message, std::string& reply);
};

}  // namespace vireo
