#include "messages/AgentText.h"

#include <exception>
#include <stdexcept>

#include "MgmtAgentIfc.h"
#include "data/ManageableData.h"
#include "log/Log.h"
#include "service/Serializer.h"

namespace vireo {
namespace {

using RecordCall = bool (MgmtAgentIfc::*)(ManageableData&);

constexpr struct {
    std::string_view word;
    RecordCall call;
} kRecordCommands[] = {
    {"getData", &MgmtAgentIfc::getData},
    {"setData", &MgmtAgentIfc::setData},
    {"manageableDataChanged", &MgmtAgentIfc::manageableDataChanged},
};

bool call(MgmtAgentIfc& agent, std::string_view word, std::string_view argument,
          ManageableData& record) {
    if (word == "resetUserData") {
        return agent.resetUserData();
    }
    for (const auto& command : kRecordCommands) {
        if (word == command.word) {
            return record.deserialize(std::string(argument)) && (agent.*command.call)(record);
        }
    }
    return false;
}

// What an agent throws ends here: whoever asked shall get its answer.
bool callGuarded(MgmtAgentIfc& agent, std::string_view word, std::string_view argument,
                 ManageableData& record) {
    try {
        return call(agent, word, argument, record);
    } catch (const std::exception& exception) {
        logExc("AgentText", __FILE__, __LINE__, "an agent threw", exception);
    } catch (...) {
        logExc("AgentText", __FILE__, __LINE__, "an agent threw",
               std::runtime_error("no exception of the standard library"));
    }
    record.clearAll();
    return false;
}

}  // namespace

void AgentText::serve(MgmtAgentIfc& agent, std::string_view message, std::string& reply) {
    // Without a colon there is no word that could be echoed.
    const std::size_t colon = message.find(':');
    const bool hasWord = colon != std::string_view::npos;
    const std::string_view word = message.substr(0, hasWord ? colon : 0);
    ManageableData record;
    const bool result = hasWord && callGuarded(agent, word, message.substr(colon + 1), record);
    reply.assign(word).push_back(':');
    Serializer::serialize(reply, result);
    reply += record.serialize();
}

}  // namespace vireo
