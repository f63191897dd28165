#include "service/Serializer.h"
#include "unit/items/ItemHouse.h"
#include "unit/service/ServiceHouse.h"

namespace vireo::test {
namespace {

/// An agent as the framework hands it out for a peer.
struct PeerAgent : Executable, TestAgent {};

class AgentMethodsTest : public ServiceHouse {
protected:
    AgentMethodsTest() {
        start();
        framework.sender = &agent;
    }

    static Method request(const char* name, const char* parameter, const std::string& value) {
        Method method(name, Method::eRequest);
        method.addStringParameter(parameter, Parameter::eIn, value);
        return method;
    }
    static Method bulk(Method method, bool flag) {
        method.addBoolParameter("bulkDataManageable", Parameter::eIn, flag);
        return method;
    }
    bool result(const Method& asked) {
        const Method reply = call(asked);
        EXPECT_EQ(reply.name(), asked.name());
        EXPECT_EQ(reply.parameters().size(), 1U);
        return reply.getBoolParameter("result", Parameter::eOut);
    }
    void write(const Words& assignments) {
        ManageableData record = recordOf(assignments);
        EXPECT_TRUE(service.setData(record));
    }

    PeerAgent agent;
};

TEST_F(AgentMethodsTest, ASenderIsToldSinglyOrInBulk) {
    EXPECT_TRUE(result(request("observeData", "nodeId", "melody")));
    EXPECT_TRUE(result(bulk(request("observeDataBulkData", "nodeId", "volume"), true)));
    EXPECT_TRUE(result(bulk(request("observeDataBulkData", "nodeId", "lazy"), true)));
    std::string list;
    Serializer::serialize(list, std::list<std::string>{"key-2", "key-1"});
    EXPECT_TRUE(result(request("observeListDataBulkData", "rootIds", list)));
    EXPECT_FALSE(result(request("observeData", "nodeId", "nothing")));
    write({"melody=1", "volume=2", "key-2=3", "lazy=4", "key-1=5"});
    EXPECT_EQ(agent.told, (Texts{"melody=1", "key-2=3", "key-1=5", "volume=2 lazy=4"}))
        << "a list is told singly, whatever the method's name says";
    agent.told.clear();
    EXPECT_TRUE(result(request("stopObservingData", "nodeId", "melody")));
    EXPECT_TRUE(result(request("stopObservingData", "nodeId", "melody")));
    write({"melody=6"});
    EXPECT_TRUE(agent.told.empty());
}

TEST_F(AgentMethodsTest, AnAnnouncementAnswersHowManyWereTold) {
    EXPECT_TRUE(result(request("observeData", "nodeId", "lazy")));
    EXPECT_TRUE(result(request("observeData", "nodeId", kAllData)));
    const ManageableData record = recordOf({"lazy=news"});
    const Method reply =
        call(request("manageableDataChanged", "manageableData", record.serialize()));
    EXPECT_EQ(reply.getIntParameter("numObservers", Parameter::eOut), 2);
    ManageableData echoed;
    ASSERT_TRUE(echoed.deserialize(reply.getStringParameter("manageableData", Parameter::eOut)));
    EXPECT_EQ(echoed.serialize(), record.serialize());
    EXPECT_EQ(agent.told, (Texts{"lazy=news", "lazy=news"}));
    const Method refused = call(request("manageableDataChanged", "manageableData", "<record"));
    EXPECT_EQ(refused.getIntParameter("numObservers", Parameter::eOut), 0);
}

TEST_F(AgentMethodsTest, ASenderThatIsNoAgentGetsFalseAndTheLineOfItsMethod) {
    Executable stranger;
    std::string list;
    Serializer::serialize(list, std::list<std::string>{"melody"});
    const struct {
        Method method;
        const char* line;
    } cases[] = {
        {request("registerManagementIdentity", "managementId", "LazyMgmtId"),
         "registerManagementIdentity: Could not cast to MgmtAgentIfc."},
        {bulk(request("registerManagementIdentityBulkData", "managementId", "LazyMgmtId"), true),
         "registerManagementIdentity: Could not cast to MgmtAgentIfc."},
        {request("observeData", "nodeId", "melody"),
         "observeData: Could not cast to MgmtAgentIfc."},
        {bulk(request("observeDataBulkData", "nodeId", "melody"), false),
         "observeData: Could not cast to MgmtAgentIfc."},
        {request("observeListDataBulkData", "rootIds", list),
         "observeData: Could not cast to MgmtAgentIfc."},
        {request("stopObservingData", "nodeId", "melody"),
         "stopObservingData: Could not cast to MgmtAgentIfc."},
    };
    for (Executable* sender : {static_cast<Executable*>(nullptr), &stranger}) {
        framework.sender = sender;
        for (const auto& [method, line] : cases) {
            ports.forgetLines();
            EXPECT_FALSE(result(method));
            EXPECT_EQ(ports.count(kLogDebug, line), 1) << method.name();
        }
    }
    EXPECT_EQ(call(request("observeListDataBulkData", "rootIds", "2;1;a")).name(), "");
    EXPECT_EQ(service.getNumberObservers("melody"), 0U);
}

}  // namespace
}  // namespace vireo::test
