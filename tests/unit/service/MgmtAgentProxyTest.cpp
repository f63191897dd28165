#include <gtest/gtest.h>

#include "data/ManageableData.h"
#include "messages/MgmtAgentProxy.h"
#include "service/Service.h"
#include "support/TestPorts.h"

namespace vireo::test {
namespace {

/// A peer that answers every text with `reply`.
struct TestRequest : ProxyRequest {
    const std::string& interface() const override { return interfaceName; }
    const std::string& destinationChannelName() const override { return channel; }
    Service* findDirectService() override {
        ++lookUps;
        return direct;
    }
    void setProtocol(const std::string& name) override { protocol = name; }
    void setMsgType(int number) override { type = number; }
    bool sendAndWait(const std::string& message, std::string& answer, int timeoutMs) override {
        sent.push_back(message);
        EXPECT_EQ(timeoutMs, ProxyRequest::mDefaultTimeout);
        answer = reply;
        return !reply.empty();
    }
    bool sendOneWay(const std::string& message) override {
        sent.push_back(message);
        return isThere;
    }
    bool sendMethod(const Method&) override { return false; }

    std::string interfaceName = "MgmtAgentIfc";
    std::string channel = "owner";
    std::string protocol;
    int type = 0;
    std::vector<std::string> sent;
    std::string reply;
    bool isThere = true;
    Service* direct = nullptr;
    int lookUps = 0;
};

struct Stranger : Service {
    void init(Context&) override {}
    void run() override {}
    void shutdown() override {}
};

struct Neighbour : Stranger, MgmtAgentIfc {
    bool setData(ManageableData&) override { return ++writes > 0; }
    bool getData(ManageableData& record) override { return record.populate("x", "direct"); }
    bool manageableDataChanged(ManageableData&) override { return ++changes > 0; }
    bool resetUserData() override { return true; }
    int writes = 0;
    int changes = 0;
};

class MgmtAgentProxyTest : public ::testing::Test {
protected:
    MgmtAgentProxyTest() {
        proxy.initProxy(request);
        record.populate("x", "1");
    }

    TestPorts ports;
    TestRequest request;
    MgmtAgentProxy proxy;
    ManageableData record;
};

TEST_F(MgmtAgentProxyTest, TextsHaveTheirCommandBeforeTheColon) {
    EXPECT_EQ(request.protocol, "vireo_text");
    EXPECT_EQ(request.type, 4);
    const std::string text = record.serialize();
    proxy.getData(record);
    proxy.setData(record);
    EXPECT_TRUE(proxy.manageableDataChanged(record));
    request.isThere = false;
    EXPECT_FALSE(proxy.manageableDataChanged(record));
    EXPECT_TRUE(proxy.resetUserData()) << "whether it could be sent or not";
    EXPECT_EQ(request.sent,
              (std::vector<std::string>{"getData:" + text, "setData:" + text,
                                        "manageableDataChanged:" + text,
                                        "manageableDataChanged:" + text, "resetUserData:"}));
}

TEST_F(MgmtAgentProxyTest, AnAgentInTheSameProcessIsCalledDirectlyButToldByMessage) {
    Neighbour neighbour;
    EXPECT_FALSE(proxy.getData(record)) << "not there yet";
    request.direct = &neighbour;
    EXPECT_TRUE(proxy.getData(record));
    EXPECT_EQ(record.interogate("x")->value(), "direct");
    EXPECT_TRUE(proxy.setData(record));
    EXPECT_EQ(request.lookUps, 2) << "what was found is kept";
    EXPECT_EQ(request.sent.size(), 1U);
    EXPECT_TRUE(proxy.manageableDataChanged(record));
    EXPECT_EQ(neighbour.changes, 0);
    EXPECT_EQ(request.sent.size(), 2U);
}

TEST_F(MgmtAgentProxyTest, AServiceThatIsNoAgentIsSpokenToByMessage) {
    Stranger stranger;
    request.direct = &stranger;
    request.reply = "setData:1;<record></record>";
    EXPECT_TRUE(proxy.setData(record));
    EXPECT_EQ(request.sent.size(), 1U);
}

}  // namespace
}  // namespace vireo::test
