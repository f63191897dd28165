#include "snmp/TrapTarget.h"

#include <utility>

#include "snmp/TrapReceiverText.h"

namespace vireo {
namespace {

constexpr unsigned short kUsualPort = 162;

// How often a name is looked up anew, while traps are sent.
constexpr std::chrono::seconds kLookInterval(1);

}  // namespace

TrapTarget::TrapTarget(HostResolver& resolver, TrapAddress address)
    : m_resolver(resolver), m_texts(std::move(address)) {}

std::string TrapTarget::name() const {
    return "'" + m_texts.host + "'" +
           (m_texts.port.empty() ? std::string() : ", port " + m_texts.port);
}

const UdpAddress* TrapTarget::find(std::string& error) {
    if (m_isForGood && m_address) {
        return &*m_address;
    }
    if (m_texts.host.empty()) {
        error = "no trap is sent: its receiver has no address";
        return nullptr;
    }
    const auto port = m_texts.port.empty() ? kUsualPort : parsePort(m_texts.port);
    if (!port) {
        error = "no trap is sent to " + name() + ": a port is a number from 1 to 65535";
        return nullptr;
    }
    const auto now = std::chrono::steady_clock::now();
    if (!m_address || now - m_looked >= kLookInterval) {
        std::string reason;
        m_address = m_resolver.find(m_texts.host, *port, reason);
        m_looked = now;
        m_isForGood = m_address && HostResolver::isAddress(m_texts.host);
        if (!m_address) {
            error = "no trap is sent to " + name() + ": " + reason;
        }
    }
    return m_address ? &*m_address : nullptr;
}

bool FailureOnce::pass(bool result, std::string& error) {
    if (result) {
        m_last.clear();
    } else if (error == m_last) {
        error.clear();
    } else {
        m_last = error;
    }
    return result;
}

}  // namespace vireo
