#include "LoopFixture.h"

#include <stdexcept>
#include <string_view>

namespace vireo::test {

void EchoInvoker::handleMessage(Executable* executable, const char* message, int length,
                                InvokerResponse* response) {
    const std::string text(message, static_cast<std::size_t>(length));
    ++handled;
    lastExecutable = executable;
    std::string reply = text;
    if (text.starts_with("big:")) {
        ++bigHandled;
        reply.assign(std::stoul(text.substr(4)), 'b');
    } else if (text == "count") {
        reply = std::to_string(handled);
    } else if (text == "protocol") {
        reply = response->protocol();
    }
    response->setPayload(reply.data(), static_cast<int>(reply.size()));
    if (text == "silent") {
        return;
    }
    if (text == "throw") {
        throw std::runtime_error("out of order");
    }
    if (text == "throw a number") {
        throw 42;
    }
    response->send();
    if (text == "twice") {
        response->setPayload("again", 5);
        response->send();
    }
}

void LoopFixture::start(std::size_t maximumPeers) {
    std::string error;
    MessageLimits limits;
    limits.maximumPeers = maximumPeers;
    ASSERT_TRUE(m_loop.listen(m_socket, limits, error)) << error;
    m_loop.serve("EchoIfc", m_invoker, m_executable);
    m_thread = std::thread([this] { m_loop.run(); });
}

void LoopFixture::stop() {
    if (m_thread.joinable()) {
        m_loop.stop();
        m_thread.join();
    }
}

}  // namespace vireo::test
