#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "data/ManageableData.h"
#include "messages/LocalMgmtInvoker.h"
#include "messages/RpcAdapter.h"
#include "service/Context.h"
#include "service/Invoker.h"
#include "service/VireoClientMgmt.h"
#include "store/SqliteDataAccess.h"
#include "support/Records.h"
#include "support/SmallPhone.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {

/// A run-time context whose only service is the store, once the test offers it.
struct TestContext : SvcRTEContext {
    Executable* findService(const std::string& interfaceName) override {
        asked.push_back(interfaceName);
        const auto other = others.find(interfaceName);
        return interfaceName == "DataAccessServiceIfc" ? store
               : other != others.end()                 ? other->second
                                                       : nullptr;
    }
    void postToMessageThread(std::function<void()> task) override { task(); }
    TimerFacility* timers() override { return nullptr; }

    Executable* store = nullptr;
    std::map<std::string, Executable*> others;
    std::vector<std::string> asked;
};

/// The reply handle of one message.
struct TestResponse : InvokerResponse {
    explicit TestResponse(std::string name) : protocolName(std::move(name)) {}
    const std::string& protocol() const override { return protocolName; }
    void send() override { ++sends; }
    void setPayload(const char* text, int length) override {
        payload.assign(text, static_cast<std::size_t>(length));
    }

    std::string protocolName;
    std::string payload;
    int sends = 0;
};

struct TestFramework : FrameworkContext {
    ProtocolAdapter* findProtocolAdapter(const std::string& protocol) override {
        if (protocol == "throwing") {
            throw 42;
        }
        return protocol == VireoProtocols::DEFAULT ? &rpc : nullptr;
    }
    Executable* findPeerProxy(const std::string& interfaceName) override {
        return interfaceName == "MgmtAgentIfc" ? sender : nullptr;
    }

    Executable* sender = nullptr;  ///< the agent behind the messages
    RpcAdapter rpc;
};

/// The whole service on a small phone, called by message.
class ServiceHouse : public ::testing::Test {
protected:
    ServiceHouse() {
        installSmallPhone(ports);
        std::string error;
        store = SqliteDataAccess::open(directory.file("store.db"),
                                       *StoreCatalogue::parse(smallPhoneStore(), error), error);
        context.store = store.get();
    }

    void start() {
        service.init(context);
        invoker.initInvoker(&framework);
    }

    std::string send(Executable* target, const std::string& bytes,
                     const std::string& protocol = VireoProtocols::DEFAULT) {
        TestResponse response(protocol);
        invoker.handleMessage(target, bytes.data(), static_cast<int>(bytes.size()), &response);
        EXPECT_EQ(response.sends, 1) << "every message gets exactly one reply";
        return response.payload;
    }

    /// The decoded reply; unnamed when it was empty.
    Method call(const Method& request) {
        std::string bytes;
        RpcAdapter::encodeText(request, bytes);
        Method reply;
        const std::string answer = send(&service, bytes);
        EXPECT_TRUE(answer.empty() || RpcAdapter::decodeText(answer, reply));
        return reply;
    }

    TestPorts ports;
    TemporaryDirectory directory;
    std::unique_ptr<SqliteDataAccess> store;
    TestContext context;
    TestFramework framework;
    VireoClientMgmt service;
    LocalMgmtInvoker invoker;
};

}  // namespace vireo::test
