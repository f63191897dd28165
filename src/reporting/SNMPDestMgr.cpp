#include "reporting/SNMPDestMgr.h"

#include <string_view>
#include <utility>

#include "LogMacros.h"
#include "data/ManageableData.h"
#include "reporting/TrapItem.h"
#include "snmp/SNMPTrapIf.h"

namespace vireo {
namespace {

constexpr const char* kOn = "true";
constexpr const char* kOff = "false";

// How often a session is opened anew because an item changed while it was being opened.
constexpr int kMostAttempts = 8;

}  // namespace

struct SNMPDestMgr::Settings {
    std::string address;
    std::string port;
    std::string password;
};

SNMPDestMgr::SNMPDestMgr(LocalMgmtIfc* service, const char* activeTag, const char* addressTag,
                         const char* portTag, const char* passwordTag)
    : m_service(service), m_tags{activeTag, addressTag, portTag, passwordTag, ""} {}

SNMPDestMgr::~SNMPDestMgr() = default;

bool SNMPDestMgr::raiseTrap(int genericTrap) {
    const Session session = openSession();
    return session && session->sendSNMPGenericTrap(genericTrap) != 0;
}

bool SNMPDestMgr::raiseTrap(const SNMPTrapData& data) {
    const Session session = openSession();
    return session && session->sendSNMPSpecificTrap(data) != 0;
}

bool SNMPDestMgr::initSNMPTrapSession() {
    return openSession() != nullptr;
}

SNMPDestMgr::Session SNMPDestMgr::session() const {
    const std::lock_guard lock(m_mutex);
    return m_session;
}

SNMPDestMgr::Session SNMPDestMgr::openSession() {
    Session open = session();
    bool isUpToDate = open != nullptr;
    for (int attempt = 0; !isUpToDate && attempt < kMostAttempts; ++attempt) {
        open = openOnce(isUpToDate);
    }
    return open;
}

/// What changes between the reading of the items and the observing is not told to anybody. So they
/// are looked at once more.
SNMPDestMgr::Session SNMPDestMgr::openOnce(bool& isUpToDate) {
    isUpToDate = true;
    if (TrapItem::getValueFromVCMS(m_service, m_tags.active) != kOn) {
        return nullptr;
    }
    const Settings settings = readSettings();
    auto open = std::make_shared<SNMPTrapIf>(settings.address, settings.port, settings.password);
    VCMS_LOG(kLogDebug,
             "SNMPDestMgr::validateSNMPTrapSession - started SNMP trap session. IP = %s, Port = "
             "%s, Pwd = %s",
             settings.address.c_str(), settings.port.c_str(), settings.password.c_str());
    observe();
    {
        const std::lock_guard lock(m_mutex);
        m_session = open;
    }
    isUpToDate = holdsStill(settings);
    if (!isUpToDate) {
        close();
    }
    return open;
}

SNMPDestMgr::Settings SNMPDestMgr::readSettings() {
    return {TrapItem::getValueFromVCMS(m_service, m_tags.address),
            TrapItem::getValueFromVCMS(m_service, m_tags.port),
            TrapItem::getValueFromVCMS(m_service, m_tags.password)};
}

bool SNMPDestMgr::holdsStill(const Settings& settings) const {
    const auto is = [this](const char* tag, const std::string& value) {
        return TrapItem::read(m_service, tag).value_or("") == value;
    };
    return is(m_tags.active, kOn) && is(m_tags.address, settings.address) &&
           is(m_tags.port, settings.port) && is(m_tags.password, settings.password);
}

void SNMPDestMgr::observe() {
    for (const char* tag : {m_tags.active, m_tags.address, m_tags.port, m_tags.password}) {
        m_service->observeManageableData(tag, this);
    }
}

void SNMPDestMgr::stopObserving() {
    for (const char* tag : {m_tags.active, m_tags.address, m_tags.port, m_tags.password}) {
        m_service->stopObservingManageableData(tag, this);
    }
}

bool SNMPDestMgr::deleteTrap() {
    Session closed;  // ends without the lock
    {
        const std::lock_guard lock(m_mutex);
        closed.swap(m_session);
    }
    if (closed) {
        VCMS_LOG(kLogDebug, "SNMPDestMgr::deleteSpecificTrap ");
    }
    return closed != nullptr;
}

void SNMPDestMgr::close() {
    if (deleteTrap()) {
        stopObserving();
    }
}

bool SNMPDestMgr::manageableDataChanged(ManageableData& record) {
    const std::string tag = record.getRootId();
    std::string value;
    record.interogate(tag, tag, value);
    VCMS_LOG(kLogDebug, "SNMPDestMgr::manageableDataChanged changedTag = %s, newValue = %s\n",
             tag.c_str(), value.c_str());
    const bool isElsewhere = tag == m_tags.address || tag == m_tags.port || tag == m_tags.password;
    if (isElsewhere || (tag == m_tags.active && value == kOff)) {
        close();
    }
    return true;
}

}  // namespace vireo
