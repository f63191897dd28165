#include "snmp/SNMPTrapIf.h"

#include "Ports.h"
#include "log/Log.h"
#include "snmp/TrapPort.h"

namespace vireo {
namespace {

/// Logs why a trap could not be sent.
int logged(bool isSent, int line, const std::string& error) {
    if (!isSent && !error.empty() && loggingOnUni(kLogError)) {
        logAppUni("SNMPTrapIf", "./host/device/SNMPTrapIf", kLogError, line, "%s", error.c_str());
    }
    return isSent ? 1 : 0;
}

std::unique_ptr<TrapSession> openSession(const TrapAddress& address) {
    TrapPort* const traps = installedPorts().traps;
    return traps != nullptr ? traps->open(address) : nullptr;
}

constexpr const char* kNoPort = "no trap is sent: there is no part that could";

}  // namespace

SNMPTrapIf::SNMPTrapIf(const std::string& address, const std::string& port,
                       const std::string& password)
    : m_session(openSession({address, port, password})) {}

SNMPTrapIf::~SNMPTrapIf() = default;

int SNMPTrapIf::sendSNMPGenericTrap(int genericTrap) {
    std::string error;
    if (!m_session) {
        return logged(false, __LINE__, kNoPort);
    }
    return logged(m_session->sendGeneric(genericTrap, error), __LINE__, error);
}

int SNMPTrapIf::sendSNMPSpecificTrap(const SNMPTrapData& data) {
    std::string error;
    if (!m_session) {
        return logged(false, __LINE__, kNoPort);
    }
    return logged(m_session->sendSpecific(data, error), __LINE__, error);
}

}  // namespace vireo
