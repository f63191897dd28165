#include <stdexcept>
#include <string>

#include "Fuzz.h"
#include "MgmtAgentIfc.h"
#include "data/ManageableData.h"
#include "messages/AgentText.h"
#include "service/Serializer.h"

namespace vireo::fuzz {
namespace {

class Agent : public MgmtAgentIfc {
public:
    bool setData(ManageableData& record) override { return take(record); }
    bool getData(ManageableData& record) override { return take(record); }
    bool manageableDataChanged(ManageableData& record) override { return take(record); }
    bool resetUserData() override { return true; }

private:
    static bool take(ManageableData& record) {
        const std::string rootId = record.getRootId();
        if (rootId == "throw") {
            throw std::runtime_error("as it was told");
        }
        if (rootId == "refuse") {
            record.addRejectReason(rootId, "//*", "as it was told");
            return false;
        }
        return record.populate(rootId, "1");
    }
};

}  // namespace

void run(std::string_view input) {
    Agent agent;
    std::string reply = "of an earlier message";
    AgentText::serve(agent, input, reply);
    const std::size_t colon = input.find(':');
    const std::string_view word = input.substr(0, colon != std::string_view::npos ? colon : 0);
    require(reply.starts_with(std::string(word) + ":"), "the command word is echoed");
    std::string_view rest = std::string_view(reply).substr(word.size() + 1);
    bool result = false;
    require(Serializer::deserialize(rest, result), "a bool follows");
    ManageableData record;
    require(record.deserialize(std::string(rest)), "a record ends the answer");
}

}  // namespace vireo::fuzz
