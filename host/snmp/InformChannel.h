#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "snmp/EngineProbe.h"
#include "snmp/InformSender.h"
#include "snmp/SnmpEngine.h"
#include "snmp/SnmpUsers.h"

namespace vireo {

struct InformOutbox {
    InformPlace place;
    // Guarded by the lock of the sender.
    std::deque<TrapContent> waiting;
    bool isClosed = false;
};

/// What the channels of one sender have in common.
struct InformSurroundings {
    const TrapOptions& options;
    const TrapOrigin& origin;
    const std::string& root;
    std::optional<SnmpEngine> engine;  ///< made by the first channel that needs it
};

/// The session of one outbox with the SNMP library, and the trap that is on its way. Belongs to the
/// sender's thread.
class InformChannel {
public:
    InformChannel(std::shared_ptr<InformOutbox> outbox, InformSurroundings& surroundings);
    ~InformChannel();
    InformChannel(const InformChannel&) = delete;
    InformChannel& operator=(const InformChannel&) = delete;

    InformOutbox& outbox() { return *m_outbox; }
    /// Whether a trap waits to be confirmed.
    bool isWaiting() const { return m_current.has_value(); }
    /// What to wait for while one does; -1 when there is no session.
    int descriptor() const;

    /// Sends a trap, and waits for its confirmation if it gets one. Not while another one waits.
    void send(TrapContent content);
    /// Takes what has come.
    void read();
    /// Sends again what was not confirmed in time, or gives it up.
    void checkTime();

private:
    void start();
    bool wantsEngine() const;
    void ask();
    void askAgain();
    void openAndSend();
    bool open(std::string& error);
    bool prepareSecurity(std::optional<SnmpUser>& user, std::string& error);
    bool addSecurity(netsnmp_session& session, const SnmpUser& user, std::string& error) const;
    void close();
    void sendCurrent();
    bool sendPdu(PduPointer pdu);
    void fail(const std::string& reason);
    void finish();
    void sendAnewIfOther();
    bool readSession() const;
    bool mayBeOther() const { return m_engine && !m_wasAsked; }
    static int onEvent(int operation, netsnmp_session* session, int request, netsnmp_pdu* pdu,
                       void* channel);
    void take(int operation, const netsnmp_pdu* pdu);

    const std::shared_ptr<InformOutbox> m_outbox;
    InformSurroundings& m_surroundings;
    void* m_session = nullptr;
    bool m_isStale = false;              ///< the next trap wants a new session
    std::optional<EngineProbe> m_probe;  ///< while the receiver is being asked who it is
    int m_questionsLeft = 0;
    bool m_wasAsked = false;                      ///< on behalf of this trap
    bool m_isOther = false;                       ///< it is not who it was
    std::chrono::steady_clock::time_point m_due;  ///< of the answer
    std::optional<ReceiverEngine> m_engine;       ///< of a receiver that was asked
    bool m_saidFailure = false;
    std::optional<TrapContent> m_current;
};

}  // namespace vireo
