#include "snmp/NetSnmpTraps.h"

#include <arpa/inet.h>

#include <array>
#include <exception>
#include <utility>

#include "log/Log.h"
#include "snmp/SNMPTrapData.h"
#include "snmp/SnmpLibrary.h"
#include "snmp/TrapReceiverText.h"
#include "snmp/TrapSocket.h"
#include "snmp/TrapTarget.h"

namespace vireo {
namespace {

constexpr int kGenericTraps = 6;

void logLine(int level, int line, const std::string& text) {
    if (loggingOnUni(level)) {
        logAppUni("Traps", "./host/snmp/NetSnmpTraps", level, line, "%s", text.c_str());
    }
}

}  // namespace

/// What the sessions have in common. What is thrown, be it for want of memory, is a failure.
class NetSnmpTraps::Session : public TrapSession {
public:
    Session(NetSnmpTraps& traps, const TrapAddress& address)
        : m_traps(traps), m_target(traps.m_resolver, address) {}

    bool sendGeneric(int genericTrap, std::string& error) override {
        if (genericTrap < 0 || genericTrap >= kGenericTraps) {
            error = "there is no generic trap " + std::to_string(genericTrap);
            return false;
        }
        return guarded([&] { return sendGenericTo(genericTrap, error); }, error);
    }
    bool sendSpecific(const SNMPTrapData& data, std::string& error) override {
        return guarded(
            [&] {
                TrapContent content;
                content.specific = data.specificTrapNo();
                content.varbinds = data.varbinds();
                content.upTime = m_traps.upTime();
                return sendContent(std::move(content), error);
            },
            error);
    }

protected:
    virtual bool sendGenericTo(int genericTrap, std::string& error) = 0;
    virtual bool sendContent(TrapContent content, std::string& error) = 0;

    NetSnmpTraps& m_traps;
    TrapTarget m_target;

private:
    template <class Send>
    bool guarded(Send&& send, std::string& error) {
        bool isSent = false;
        try {
            isSent = send();
        } catch (const std::exception& exception) {
            error = "no trap is sent to " + m_target.name() + ": " + exception.what();
        }
        return m_failures.pass(isSent, error);
    }

    FailureOnce m_failures;
};

/// To a receiver that confirms nothing.
class NetSnmpTraps::DirectSession : public Session {
public:
    DirectSession(NetSnmpTraps& traps, const TrapAddress& address, SnmpVersion version)
        : Session(traps, address), m_version(version), m_origin(traps.m_origin) {}

protected:
    bool sendGenericTo(int genericTrap, std::string& error) override {
        return reach(error) && sendBytes(m_templates.at(static_cast<std::size_t>(genericTrap))
                                             .at(m_traps.upTime(), m_origin, genericTrap, m_version,
                                                 m_target.texts().password),
                                         error);
    }
    bool sendContent(TrapContent content, std::string& error) override {
        if (!reach(error)) {
            return false;
        }
        std::string bytes;
        {
            const SnmpLibrary::Lock lock = SnmpLibrary::lock();
            bytes = TrapMessage::encode(m_origin, content, m_version, m_target.texts().password);
        }
        return sendBytes(bytes, error);
    }

private:
    bool reach(std::string& error) {
        const UdpAddress* const address = m_target.find(error);
        if (address == nullptr || m_socket.isOpenTo(*address)) {
            return address != nullptr;
        }
        if (!m_socket.open(*address, error)) {
            error = "no trap is sent to " + m_target.name() + ": " + error;
            return false;
        }
        if (!m_traps.m_hasAgentAddress) {
            ::inet_pton(AF_INET, m_socket.ownAddress().c_str(), m_origin.agentAddress);
        }
        m_templates = {};
        return true;
    }
    bool sendBytes(const std::string& bytes, std::string& error) {
        if (bytes.empty()) {
            error = "a trap for " + m_target.name() + " is too long, or not to be encoded";
            return false;
        }
        return m_socket.send(bytes, error);
    }

    const SnmpVersion m_version;
    TrapOrigin m_origin;
    TrapSocket m_socket;
    std::array<TrapTemplate, kGenericTraps> m_templates;
};

/// To a receiver that confirms, or whose messages are ciphered.
class NetSnmpTraps::QueuedSession : public Session {
public:
    QueuedSession(NetSnmpTraps& traps, const TrapAddress& address, ReceiverSettings receiver)
        : Session(traps, address), m_receiver(std::move(receiver)) {}
    ~QueuedSession() override { m_traps.m_informs.close(m_outbox); }

protected:
    bool sendGenericTo(int genericTrap, std::string& error) override {
        TrapContent content;
        content.generic = genericTrap;
        content.upTime = m_traps.upTime();
        return sendContent(std::move(content), error);
    }
    bool sendContent(TrapContent content, std::string& error) override {
        const UdpAddress* const address = m_target.find(error);
        if (address == nullptr) {
            return false;
        }
        if (!m_outbox || *address != m_address) {
            m_traps.m_informs.close(m_outbox);
            m_address = *address;
            m_outbox = m_traps.m_informs.open({.address = m_address,
                                               .name = m_target.name(),
                                               .community = m_target.texts().password,
                                               .receiver = m_receiver});
        }
        return m_traps.m_informs.add(m_outbox, std::move(content), error);
    }

private:
    const ReceiverSettings m_receiver;
    UdpAddress m_address;
    std::shared_ptr<InformOutbox> m_outbox;
};

NetSnmpTraps::NetSnmpTraps(const std::string& root, const TrapOptions& options)
    : m_options(options),
      m_resolver(options.resolveTimeout, options.resolveLife),
      m_informs(root, m_options, m_origin) {
    if (!TrapOrigin::parseObjectId(options.enterprise, m_origin.enterprise)) {
        logLine(kLogError, __LINE__,
                "'" + options.enterprise + "' is no object identifier: no trap can be sent");
    }
    m_hasAgentAddress =
        ::inet_pton(AF_INET, options.agentAddress.c_str(), m_origin.agentAddress) == 1;
}

NetSnmpTraps::~NetSnmpTraps() {
    stop();
}

void NetSnmpTraps::stop() {
    m_informs.stop();
}

std::uint32_t NetSnmpTraps::upTime() const {
    using Hundredths = std::chrono::duration<std::uint64_t, std::centi>;
    return static_cast<std::uint32_t>(
        std::chrono::duration_cast<Hundredths>(std::chrono::steady_clock::now() - m_start).count());
}

std::unique_ptr<TrapSession> NetSnmpTraps::open(const TrapAddress& address) {
    ReceiverSettings receiver = findReceiver(m_options, address.host, address.port);
    if (receiver.isConfirmed || receiver.version == SnmpVersion::eV3) {
        return std::make_unique<QueuedSession>(*this, address, std::move(receiver));
    }
    return std::make_unique<DirectSession>(*this, address, receiver.version);
}

}  // namespace vireo
