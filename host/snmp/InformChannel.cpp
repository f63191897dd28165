#include "snmp/InformChannel.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include "log/Log.h"
#include "snmp/SnmpLibrary.h"
#include "snmp/SnmpUsers.h"

namespace vireo {
namespace {

void logLine(int level, int line, const std::string& text) {
    if (loggingOnUni(level)) {
        logAppUni("Traps", "./host/snmp/InformChannel", level, line, "%s", text.c_str());
    }
}

unsigned char* duplicate(const std::string& bytes) {
    return static_cast<unsigned char*>(::netsnmp_memdup(bytes.data(), bytes.size()));
}

/// What the library allocated, or takes for its own.
void release(void* memory) {
    std::free(memory);  // NOLINT(cppcoreguidelines-no-malloc)
}

void setEngine(netsnmp_session& session, const std::string& id) {
    session.securityEngineID = duplicate(id);
    session.securityEngineIDLen = id.size();
    session.contextEngineID = duplicate(id);
    session.contextEngineIDLen = id.size();
}

}  // namespace

InformChannel::InformChannel(std::shared_ptr<InformOutbox> outbox, InformSurroundings& surroundings)
    : m_outbox(std::move(outbox)), m_surroundings(surroundings) {}

InformChannel::~InformChannel() {
    close();
}

void InformChannel::close() {
    if (m_session != nullptr) {
        const SnmpLibrary::Lock lock = SnmpLibrary::lock();
        ::snmp_sess_close(std::exchange(m_session, nullptr));
    }
}

int InformChannel::descriptor() const {
    return m_session != nullptr ? ::snmp_sess_transport(m_session)->sock : -1;
}

void InformChannel::send(TrapContent content) {
    m_current = std::move(content);
    std::string error;
    if (std::exchange(m_isStale, false)) {
        close();
    }
    if (m_session == nullptr && !open(error)) {
        fail(error);
        return;
    }
    sendCurrent();
}

bool InformChannel::open(std::string& error) {
    const InformPlace& place = m_outbox->place;
    const TrapOptions& options = m_surroundings.options;
    const SnmpLibrary::Lock lock = SnmpLibrary::lock();
    netsnmp_session session{};
    ::snmp_sess_init(&session);
    std::string peer = (place.isLong ? "udp6:" : "udp:") + place.place;
    std::string community = place.community;
    session.peername = peer.data();
    session.timeout =
        std::chrono::duration_cast<std::chrono::microseconds>(options.informTimeout).count();
    session.retries = options.informRetries;
    session.callback = onEvent;
    session.callback_magic = this;
    session.flags |= SNMP_FLAGS_DONT_PROBE;  // it would wait for the answer
    const bool isThird = place.receiver.version == SnmpVersion::eV3;
    if (!isThird) {
        session.version = SNMP_VERSION_2c;
        session.community = reinterpret_cast<unsigned char*>(community.data());
        session.community_len = community.size();
    }
    const bool isSecured = !isThird || addSecurity(session, error);
    if (isSecured) {
        m_session = ::snmp_sess_open(&session);  // with copies of everything
        if (m_session == nullptr) {
            error = std::string("no session: ") + ::snmp_api_errstring(session.s_snmp_errno);
        } else if (isThird && session.securityEngineIDLen != 0) {
            ::usm_create_user_from_session(::snmp_sess_session(m_session));
        }
    }
    release(session.securityName);
    release(session.securityAuthProto);
    release(session.securityPrivProto);
    release(session.securityEngineID);
    release(session.contextEngineID);
    return m_session != nullptr;
}

bool InformChannel::addSecurity(netsnmp_session& session, std::string& error) {
    const ReceiverSettings& receiver = m_outbox->place.receiver;
    const auto user = SnmpUsers::find(m_surroundings.root + "/" + m_surroundings.options.userFile,
                                      receiver.user, error);
    if (!user || !user->addTo(session, error)) {
        return false;
    }
    if (!receiver.isConfirmed) {
        addOwnEngine(session);
    } else if (!m_engineId.empty()) {
        setEngine(session, m_engineId);
    }
    return true;
}

/// Who sends what is not confirmed counts the time; who confirms it does.
void InformChannel::addOwnEngine(netsnmp_session& session) {
    std::string error;
    if (!m_surroundings.engine) {
        m_surroundings.engine =
            SnmpEngine::start(m_surroundings.root + "/" + m_surroundings.options.engineFile, error);
    }
    if (!error.empty()) {
        logLine(kLogError, __LINE__, error);
    }
    setEngine(session, m_surroundings.engine->id());
    session.engineBoots = m_surroundings.engine->boots();
    session.engineTime = static_cast<unsigned>(::get_uptime() / 100);
    ::set_enginetime(session.securityEngineID, static_cast<unsigned>(session.securityEngineIDLen),
                     session.engineBoots, session.engineTime, 1);
}

void InformChannel::sendCurrent() {
    const ReceiverSettings& receiver = m_outbox->place.receiver;
    const SnmpLibrary::Lock lock = SnmpLibrary::lock();
    if (receiver.version == SnmpVersion::eV3 && receiver.isConfirmed && m_engineId.empty()) {
        m_isProbing = sendProbe();
        return;
    }
    const int command = receiver.isConfirmed ? SNMP_MSG_INFORM : SNMP_MSG_TRAP2;
    PduPointer pdu =
        TrapMessage::makePdu(m_surroundings.origin, *m_current, receiver.version, command);
    if (!pdu) {
        fail("it cannot be encoded");
    } else if (sendPdu(std::move(pdu)) && !receiver.isConfirmed) {
        finish();
    }
}

/// What it is answered with says who the receiver is.
bool InformChannel::sendProbe() {
    PduPointer pdu(::snmp_pdu_create(SNMP_MSG_GET));
    pdu->version = SNMP_VERSION_3;
    pdu->securityName = ::strdup("");
    pdu->securityNameLen = 0;
    pdu->securityLevel = SNMP_SEC_LEVEL_NOAUTH;
    pdu->securityModel = SNMP_SEC_MODEL_USM;
    return sendPdu(std::move(pdu));
}

bool InformChannel::sendPdu(PduPointer pdu) {
    if (::snmp_sess_send(m_session, pdu.get()) == 0) {
        char* reason = nullptr;
        ::snmp_sess_error(m_session, nullptr, nullptr, &reason);
        fail(reason != nullptr ? reason : "it cannot be sent");
        release(reason);
        return false;
    }
    static_cast<void>(pdu.release());  // the library frees what it has sent
    return true;
}

/// The library keeps the engine of the answer with the session, and asks on. So the session ends,
/// and the next one knows the engine from its start.
void InformChannel::takeEngine() {
    {
        const SnmpLibrary::Lock lock = SnmpLibrary::lock();
        const netsnmp_session& session = *::snmp_sess_session(m_session);
        m_engineId.assign(reinterpret_cast<const char*>(session.securityEngineID),
                          session.securityEngineIDLen);
    }
    if (m_engineId.empty()) {
        return;
    }
    m_isProbing = false;
    close();
    std::string error;
    if (open(error)) {
        sendCurrent();
    } else {
        fail(error);
    }
}

int InformChannel::onEvent(int operation, netsnmp_session* /*session*/, int /*request*/,
                           netsnmp_pdu* pdu, void* channel) {
    static_cast<InformChannel*>(channel)->take(operation, pdu);
    return 1;
}

/// Called by the library, under its lock.
void InformChannel::take(int operation, const netsnmp_pdu* pdu) {
    if (!m_current) {
        return;
    }
    if (operation == NETSNMP_CALLBACK_OP_TIMED_OUT) {
        fail("it does not answer");
    } else if (operation != NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE || pdu == nullptr) {
        fail("it cannot be reached");
    } else if (m_isProbing) {
        return;
    } else if (pdu->command == SNMP_MSG_RESPONSE) {
        finish();
    } else {
        fail("it does not take what this phone sends: " +
             std::string(
                 ::snmp_api_errstring(::snmpv3_get_report_type(const_cast<netsnmp_pdu*>(pdu)))));
    }
}

/// Said once, until a trap is confirmed again.
void InformChannel::fail(const std::string& reason) {
    m_isProbing = false;
    m_current.reset();
    m_isStale = true;  // it may be another one that answers next time
    m_engineId.clear();
    if (!m_saidFailure) {
        m_saidFailure = true;
        logLine(kLogError, __LINE__,
                "a trap to " + m_outbox->place.name + " was given up: " + reason);
    }
}

void InformChannel::finish() {
    m_current.reset();
    m_saidFailure = false;
}

void InformChannel::read() {
    {
        const SnmpLibrary::Lock lock = SnmpLibrary::lock();
        netsnmp_large_fd_set ready;
        ::netsnmp_large_fd_set_init(&ready, FD_SETSIZE);
        ::netsnmp_large_fd_setfd(descriptor(), &ready);
        ::snmp_sess_read2(m_session, &ready);
        ::netsnmp_large_fd_set_cleanup(&ready);
    }
    if (m_isProbing && m_current) {
        takeEngine();
    }
}

void InformChannel::checkTime() {
    {
        const SnmpLibrary::Lock lock = SnmpLibrary::lock();
        ::snmp_sess_timeout(m_session);
    }
    if (m_isProbing && m_current) {
        takeEngine();
    }
}

}  // namespace vireo
