#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "messages/MessageLoop.h"
#include "service/Executable.h"
#include "service/Invoker.h"
#include "support/FramePeer.h"
#include "support/TemporaryDirectory.h"
#include "support/TestPorts.h"

namespace vireo::test {

/// Does what the message says: "big:N" is answered with N bytes, "twice" and "silent" break the
/// rule of one reply, "throw" and "throw a number" let something out, "count" is answered with the
/// number of messages so far; anything else comes back.
class EchoInvoker : public Invoker {
public:
    void initInvoker(FrameworkContext*) override {}
    void handleMessage(Executable* executable, const char* message, int length,
                       InvokerResponse* response) override;

    std::atomic<int> handled{0};
    std::atomic<int> bigHandled{0};
    std::atomic<Executable*> lastExecutable{nullptr};
};

/// A running message loop that serves "EchoIfc".
class LoopFixture : public ::testing::Test {
protected:
    void TearDown() override { stop(); }

    void start(std::size_t maximumPeers = MessageLimits().maximumPeers);
    void stop();

    TemporaryDirectory m_directory;
    std::string m_socket = m_directory.file("run/vireo.sock");
    TestPorts m_log{kLogInfo};
    Executable m_executable;
    EchoInvoker m_invoker;
    MessageLoop m_loop;
    std::thread m_thread;
};

}  // namespace vireo::test
