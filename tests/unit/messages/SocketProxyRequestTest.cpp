#include <future>

#include "LoopFixture.h"
#include "MgmtAgentIfc.h"
#include "data/ManageableData.h"
#include "messages/SocketProxyRequest.h"
#include "runtime/ServiceRegistry.h"
#include "service/ProtocolAdapter.h"
#include "service/Service.h"

namespace vireo::test {
namespace {

struct AgentService : Service, MgmtAgentIfc {
    void init(Context& /*context*/) override {}
    void run() override {}
    void shutdown() override {}
    bool setData(ManageableData& record) override {
        record.addRejectReason("x", "//*", "no");
        return false;
    }
    bool getData(ManageableData& /*record*/) override { return true; }
    bool manageableDataChanged(ManageableData& record) override {
        told.set_value({record.getRootId(), std::this_thread::get_id()});
        return true;
    }
    bool resetUserData() override { return true; }

    std::promise<std::pair<std::string, std::thread::id>> told;
};

using SocketProxyRequestTest = LoopFixture;

TEST_F(SocketProxyRequestTest, TextsForAnAgentOfTheProcessReachItWithoutASocket) {
    ServiceRegistry services;
    AgentService agent;
    services.addOnChannel("MgmtAgentIfc", "here", agent);
    std::string error;
    EXPECT_TRUE(m_loop.reserveChannel("here", error)) << error;
    EXPECT_FALSE(m_loop.reserveChannel("here", error));
    start();
    SocketProxyRequest request(m_loop, services, "MgmtAgentIfc", "here");
    request.setProtocol(VireoProtocols::TEXT);

    ManageableData record;
    record.setRootId("x", nullptr);
    std::string reply;
    EXPECT_TRUE(request.sendAndWait("setData:" + record.serialize(), reply, 1));
    EXPECT_TRUE(reply.starts_with("setData:0;")) << reply;
    EXPECT_NE(reply.find("//*"), std::string::npos) << reply;

    EXPECT_TRUE(request.sendOneWay("manageableDataChanged:" + record.serialize()));
    const auto told = agent.told.get_future().get();
    EXPECT_EQ(told, std::pair(std::string("x"), m_thread.get_id())) << "not the message thread";

    FramePeer peer(m_socket);
    EXPECT_EQ(peer.hello("here"), "refused: channel name \"here\" is in use");
}

}  // namespace
}  // namespace vireo::test
