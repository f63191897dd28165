#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "service/Invoker.h"

namespace vireo {

class Connection;
struct Frame;

/// Answers one frame of one peer. It is used again for the next one, so that its texts keep their
/// memory. Used on the message thread.
class FrameResponse : public InvokerResponse {
public:
    /// Starts the answer to `frame` of `connection`; both must hold until the answer is sent. A
    /// frame that wants no reply gets none, whatever is sent.
    void begin(Connection& connection, const Frame& frame);
    /// Whether `send` was called since `begin`.
    bool sent() const { return m_sent; }
    /// Whether a request got the empty reply.
    bool isEmpty() const { return m_wantsReply && !m_isPostponed && m_payload.empty(); }
    /// Forgets the payload and sends the empty reply, unless a reply was sent.
    void sendEmpty();

    const std::string& protocol() const override { return m_protocol; }
    void send() override;
    void setPayload(const char* text, int length) override;
    /// The connection has a postponed reply from now on, until the other handle has sent it.
    std::shared_ptr<InvokerResponse> postpone() override;
    /// Whether the answer that was begun is given by another handle.
    bool isPostponed() const { return m_isPostponed; }

private:
    class Postponed;

    Connection* m_connection = nullptr;
    std::string m_protocol;
    std::string m_interfaceName;
    std::string m_payload;
    std::uint32_t m_correlation = 0;
    bool m_wantsReply = false;
    bool m_sent = true;
    bool m_isPostponed = false;
};

}  // namespace vireo
