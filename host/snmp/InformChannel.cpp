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
    if (m_current) {
        logLine(kLogWarning, __LINE__,
                "a trap to " + m_outbox->place.name + " was given up with its session");
    }
}

void InformChannel::close() {
    if (m_session != nullptr) {
        const SnmpLibrary::Lock lock = SnmpLibrary::lock();
        ::snmp_sess_close(std::exchange(m_session, nullptr));
    }
}

int InformChannel::descriptor() const {
    if (m_probe) {
        return m_probe->descriptor();
    }
    return m_session != nullptr ? ::snmp_sess_transport(m_session)->sock : -1;
}

/// Who confirms messages of version 3 is asked first who it is.
bool InformChannel::wantsEngine() const {
    const ReceiverSettings& receiver = m_outbox->place.receiver;
    return receiver.version == SnmpVersion::eV3 && receiver.isConfirmed && !m_engine;
}

void InformChannel::send(TrapContent content) {
    m_current = std::move(content);
    m_wasAsked = false;
    m_isOther = false;
    start();
}

void InformChannel::start() {
    if (std::exchange(m_isStale, false)) {
        close();
    }
    std::optional<SnmpUser> user;
    std::string error;
    if (!wantsEngine()) {
        openAndSend();
    } else if (!prepareSecurity(user, error)) {
        fail(error);  // nobody is asked in vain
    } else {
        m_wasAsked = true;
        m_questionsLeft = m_surroundings.options.informRetries + 1;
        m_probe.emplace();
        ask();
    }
}

void InformChannel::ask() {
    std::string error;
    --m_questionsLeft;
    m_due = std::chrono::steady_clock::now() + m_surroundings.options.informTimeout;
    if (m_probe && !m_probe->ask(m_outbox->place.address, error)) {
        fail(error);
    }
}

void InformChannel::askAgain() {
    if (std::chrono::steady_clock::now() < m_due) {
        return;
    }
    if (m_questionsLeft > 0) {
        ask();
    } else {
        fail("it does not answer");
    }
}

void InformChannel::openAndSend() {
    std::string error;
    if (m_session == nullptr && !open(error)) {
        fail(error);
    } else {
        sendCurrent();
    }
}

bool InformChannel::open(std::string& error) {
    const InformPlace& place = m_outbox->place;
    const TrapOptions& options = m_surroundings.options;
    std::optional<SnmpUser> user;
    if (!prepareSecurity(user, error)) {
        return false;
    }
    const SnmpLibrary::Lock lock = SnmpLibrary::lock();
    netsnmp_session session{};
    ::snmp_sess_init(&session);
    const bool isLong = place.address.storage.ss_family == AF_INET6;
    std::string peer = (isLong ? "udp6:" : "udp:") + place.address.text();
    std::string community = place.community;
    session.peername = peer.data();
    session.timeout =
        std::chrono::duration_cast<std::chrono::microseconds>(options.informTimeout).count();
    session.retries = options.informRetries;
    session.callback = onEvent;
    session.callback_magic = this;
    session.flags |= SNMP_FLAGS_DONT_PROBE;  // it would wait for the answer
    if (!user) {
        session.version = SNMP_VERSION_2c;
        session.community = reinterpret_cast<unsigned char*>(community.data());
        session.community_len = community.size();
    }
    if (!user || addSecurity(session, *user, error)) {
        m_session = ::snmp_sess_open(&session);  // with copies of everything
        if (m_session == nullptr) {
            error = std::string("no session: ") + ::snmp_api_errstring(session.s_snmp_errno);
        } else if (user) {
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

/// Reads and writes the files of version 3; without the library's lock, as that may wait.
bool InformChannel::prepareSecurity(std::optional<SnmpUser>& user, std::string& error) {
    const ReceiverSettings& receiver = m_outbox->place.receiver;
    if (receiver.version != SnmpVersion::eV3) {
        return true;
    }
    const TrapOptions& options = m_surroundings.options;
    user = SnmpUsers::find(m_surroundings.root + "/" + options.userFile, receiver.user, error);
    if (user && !receiver.isConfirmed && !m_surroundings.engine) {
        std::string fault;
        m_surroundings.engine =
            SnmpEngine::start(m_surroundings.root + "/" + options.engineFile, fault);
        if (!fault.empty()) {
            logLine(kLogError, __LINE__, fault);
        }
    }
    return user.has_value();
}

/// Who sends what is not confirmed counts the time; who confirms it does.
bool InformChannel::addSecurity(netsnmp_session& session, const SnmpUser& user,
                                std::string& error) const {
    if (!user.addTo(session, error)) {
        return false;
    }
    if (m_engine) {
        setEngine(session, m_engine->id);
        session.engineBoots = m_engine->boots;
        session.engineTime = m_engine->time;
    } else if (const auto& own = m_surroundings.engine) {
        setEngine(session, own->id());
        session.engineBoots = own->boots();
        session.engineTime = static_cast<unsigned>(::get_uptime() / 100);
    }
    ::set_enginetime(session.securityEngineID, static_cast<unsigned>(session.securityEngineIDLen),
                     session.engineBoots, session.engineTime, 1);
    return true;
}

void InformChannel::sendCurrent() {
    if (!m_current) {
        return;
    }
    const ReceiverSettings& receiver = m_outbox->place.receiver;
    const SnmpLibrary::Lock lock = SnmpLibrary::lock();
    const int command = receiver.isConfirmed ? SNMP_MSG_INFORM : SNMP_MSG_TRAP2;
    PduPointer pdu =
        TrapMessage::makePdu(m_surroundings.origin, *m_current, receiver.version, command);
    if (!pdu) {
        fail("it cannot be encoded");
    } else if (sendPdu(std::move(pdu)) && !receiver.isConfirmed) {
        finish();
    }
}

bool InformChannel::sendPdu(PduPointer pdu) {
    if (::snmp_sess_send(m_session, pdu.get()) == 0) {
        char* reason = nullptr;
        ::snmp_sess_error(m_session, nullptr, nullptr, &reason);
        fail(reason != nullptr ? reason : "it cannot be sent");
        release(reason);
        return false;
    }
    // The library frees what it has sent.
    static_cast<void>(pdu.release());  // NOLINT(bugprone-unused-return-value)
    return true;
}

int InformChannel::onEvent(int operation, netsnmp_session* /*session*/, int /*request*/,
                           netsnmp_pdu* pdu, void* channel) {
    static_cast<InformChannel*>(channel)->take(operation, pdu);
    return 1;
}

/// Called by the library, under its lock.
void InformChannel::take(int operation, const netsnmp_pdu* pdu) {
    if (!m_current || operation == NETSNMP_CALLBACK_OP_RESEND) {
        return;
    }
    const bool isAnswer = operation == NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE && pdu != nullptr;
    if (isAnswer && pdu->command == SNMP_MSG_RESPONSE) {
        finish();
    } else if (operation == NETSNMP_CALLBACK_OP_TIMED_OUT) {
        fail("it does not answer");
    } else if (mayBeOther()) {
        m_isOther = true;
    } else if (operation == NETSNMP_CALLBACK_OP_SEC_ERROR) {
        fail("it does not know the user, or has other passphrases");
    } else if (!isAnswer) {
        fail("it cannot be reached");
    } else {
        // The library only looks at it.
        auto* const report = const_cast<netsnmp_pdu*>(pdu);  // NOLINT(*-pro-type-const-cast)
        fail("it does not take what this phone sends: " +
             std::string(::snmp_api_errstring(::snmpv3_get_report_type(report))));
    }
}

/// A receiver that was started anew, or replaced, refuses what is meant for who it was. So it is
/// asked who it is, and gets the trap once more. Not while the library is at work with the session,
/// which this closes.
void InformChannel::sendAnewIfOther() {
    if (!m_current || !m_isOther) {
        return;
    }
    m_isOther = false;
    m_isStale = true;
    m_engine.reset();
    start();
}

/// Said once, until a trap is confirmed again.
void InformChannel::fail(const std::string& reason) {
    m_probe.reset();
    m_current.reset();
    m_isStale = true;  // it may be another one that answers next time
    m_engine.reset();
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
    if (m_probe) {
        m_engine = m_probe->read();
        if (m_engine) {
            m_probe.reset();
            openAndSend();
        }
        return;
    }
    // The library does not understand what another engine says of a user that it has not met yet.
    m_isOther = (!readSession() && mayBeOther()) || m_isOther;
    sendAnewIfOther();
}

/// False when the library could not take what has come.
bool InformChannel::readSession() const {
    const SnmpLibrary::Lock lock = SnmpLibrary::lock();
    netsnmp_large_fd_set ready;
    ::netsnmp_large_fd_set_init(&ready, FD_SETSIZE);
    ::netsnmp_large_fd_setfd(descriptor(), &ready);
    const bool isTaken = ::snmp_sess_read2(m_session, &ready) == 0;
    ::netsnmp_large_fd_set_cleanup(&ready);
    return isTaken;
}

void InformChannel::checkTime() {
    if (m_probe) {
        askAgain();
        return;
    }
    {
        const SnmpLibrary::Lock lock = SnmpLibrary::lock();
        ::snmp_sess_timeout(m_session);
    }
    sendAnewIfOther();
}

}  // namespace vireo
