#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "MgmtAgentIfc.h"
#include "data/ManageableData.h"
#include "messages/AgentText.h"

namespace vireo {
namespace {

/// Says what it was called for, and does what its item is called.
class TellingAgent : public MgmtAgentIfc {
public:
    bool setData(ManageableData& record) override { return take("set", record); }
    bool getData(ManageableData& record) override { return take("get", record); }
    bool manageableDataChanged(ManageableData& record) override { return take("told", record); }
    bool resetUserData() override {
        calls += "reset ";
        return true;
    }

    std::string calls;

private:
    bool take(const char* what, ManageableData& record) {
        const std::string item = record.getRootId();
        calls += what + (" " + item + " ");
        if (item == "throws") {
            throw std::runtime_error("no");
        }
        if (item == "throws-7") {
            throw 7;
        }
        if (item == "refused") {
            record.addRejectReason(item, "//*", "a:b");
        }
        return item != "refused" && record.populate(item, "1");
    }
};

TEST(AgentText, CallsTheAgentAndAlwaysEchoesTheCommandWord) {
    const auto record = [](const char* tag) {
        ManageableData data;
        data.addRootId(tag, nullptr);
        return data.serialize();
    };
    ManageableData filled;
    filled.populate("a", "1");
    ManageableData refused;
    refused.addRootId("refused", nullptr);
    refused.addRejectReason("refused", "//*", "a:b");
    const std::string empty = ManageableData().serialize();
    const struct {
        std::string message;
        std::string reply;
        std::string calls;
    } rows[] = {
        {"getData:" + record("a"), "getData:1;" + filled.serialize(), "get a "},
        {"setData:" + record("a"), "setData:1;" + filled.serialize(), "set a "},
        {"setData:" + record("refused"), "setData:0;" + refused.serialize(), "set refused "},
        {"manageableDataChanged:" + record("a"), "manageableDataChanged:1;" + filled.serialize(),
         "told a "},
        {"resetUserData:", "resetUserData:1;" + empty, "reset "},
        {"getData:" + record("throws"), "getData:0;" + empty, "get throws "},
        {"setData:" + record("throws-7"), "setData:0;" + empty, "set throws-7 "},
        {"getData:<record><rootId>a", "getData:0;" + empty, ""},
        {"setData:", "setData:0;" + empty, ""},
        {"GetData:" + record("a"), "GetData:0;" + empty, ""},
        {"getData" + record("a"), ":0;" + empty, ""},
        {":" + record("a"), ":0;" + empty, ""},
        {"", ":0;" + empty, ""},
    };
    for (const auto& row : rows) {
        TellingAgent agent;
        std::string reply = "of an earlier message";
        AgentText::serve(agent, row.message, reply);
        EXPECT_EQ(reply, row.reply) << row.message;
        EXPECT_EQ(agent.calls, row.calls) << row.message;
    }
}

}  // namespace
}  // namespace vireo
