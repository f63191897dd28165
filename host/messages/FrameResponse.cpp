#include "messages/FrameResponse.h"

#include <utility>

#include "log/Log.h"
#include "messages/Connection.h"
#include "messages/FrameCodec.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "FrameResponse";
constexpr const char* kFile = "./host/messages/FrameResponse";

// Memory that is kept for the next payload.
constexpr std::size_t kKeptPayload = 256U << 10U;

}  // namespace

/// Keeps the connection, whoever else lets go of it meanwhile.
class FrameResponse::Postponed : public InvokerResponse {
public:
    Postponed(std::shared_ptr<Connection> connection, FrameResponse response)
        : m_connection(std::move(connection)), m_response(std::move(response)) {}
    ~Postponed() override {
        m_response.setPayload(nullptr, 0);
        Postponed::send();
    }
    Postponed(const Postponed&) = delete;
    Postponed& operator=(const Postponed&) = delete;

    const std::string& protocol() const override { return m_response.protocol(); }
    void send() override {
        if (!m_response.sent()) {
            m_response.send();
            m_connection->setHasPostponed(false);
        }
    }
    void setPayload(const char* text, int length) override { m_response.setPayload(text, length); }

private:
    std::shared_ptr<Connection> m_connection;
    FrameResponse m_response;
};

void FrameResponse::begin(Connection& connection, const Frame& frame) {
    m_connection = &connection;
    m_protocol = frame.protocol;
    m_interfaceName = frame.interfaceName;
    m_correlation = frame.header.correlation;
    m_wantsReply = frame.header.kind == FrameKind::eRequest;
    m_sent = false;
    m_isPostponed = false;
    m_payload.clear();
    if (m_payload.capacity() > kKeptPayload) {
        m_payload.shrink_to_fit();
    }
}

void FrameResponse::setPayload(const char* text, int length) {
    if (text == nullptr || length <= 0) {
        m_payload.clear();
    } else {
        m_payload.assign(text, static_cast<std::size_t>(length));
    }
}

void FrameResponse::send() {
    if (m_sent) {
        return;
    }
    m_sent = true;
    if (!m_wantsReply) {
        return;
    }
    if (m_payload.size() > FrameCodec::kMaximumPayload) {
        // No peer would take it. The peer still waits for its one reply.
        if (loggingOnUni(kLogError)) {
            logAppUni(kComponent, kFile, kLogError, __LINE__,
                      "reply of %zu bytes to %s is longer than a frame, sent empty",
                      m_payload.size(), m_connection->label().c_str());
        }
        m_payload.clear();
    }
    m_connection->send(FrameKind::eReply, m_correlation, m_protocol, m_interfaceName, m_payload);
}

std::shared_ptr<InvokerResponse> FrameResponse::postpone() {
    const std::shared_ptr<Connection> connection = m_connection->weak_from_this().lock();
    if (m_sent || !m_wantsReply || !connection || connection->hasPostponed()) {
        return nullptr;
    }
    auto postponed = std::make_shared<Postponed>(connection, *this);
    connection->setHasPostponed(true);
    m_sent = true;
    m_isPostponed = true;
    return postponed;
}

void FrameResponse::sendEmpty() {
    if (!m_sent) {
        m_payload.clear();
        send();
    }
}

}  // namespace vireo
