#include "reporting/SNMPTrapRouter.h"

#include <algorithm>
#include <optional>

#include "LogMacros.h"
#include "data/ManageableData.h"
#include "reporting/SNMPDestMgr.h"
#include "reporting/TrapItem.h"
#include "service/Context.h"
#include "service/Executable.h"

namespace vireo {
namespace {

constexpr unsigned kGeneralManager = LocalMgmtIfc::TRAP_DEST_SNMP_MANAGER;

}  // namespace

SNMPTrapRouter::SNMPTrapRouter(const RegistrySemaphore* registry) : m_gate(registry) {}

SNMPTrapRouter::~SNMPTrapRouter() = default;

void SNMPTrapRouter::init(LocalMgmtIfc* service) {
    VCMS_LOG(kLogDebug, "SNMPTrapRouter - Initializing by vcms\n");
    const std::lock_guard lock(m_tableMutex);
    m_service = service;
}

void SNMPTrapRouter::init(Context& context) {
    VCMS_LOG(kLogDebug, "SNMPTrapRouter - Initializing by context\n");
    auto* const runTime = dynamic_cast<SvcRTEContext*>(&context);
    if (runTime == nullptr) {
        VCMS_LOG(kLogError, "dynamic cast failed in init.\n");
        return;
    }
    const std::lock_guard lock(m_tableMutex);
    m_context = runTime;
}

LocalMgmtIfc* SNMPTrapRouter::service() {
    SvcRTEContext* context = nullptr;
    {
        const std::lock_guard lock(m_tableMutex);
        if (m_service != nullptr || m_context == nullptr) {
            return m_service;
        }
        context = m_context;
    }
    auto* const found = dynamic_cast<LocalMgmtIfc*>(context->findService("LocalMgmtIfc"));
    const std::lock_guard lock(m_tableMutex);
    m_service = found;
    return found;
}

template <class Trap>
bool SNMPTrapRouter::raise(LocalMgmtIfc::TrapDest dest, const Trap& trap) {
    const RaiseTurn turn(m_gate);
    // Unsigned, so that a negative number is as unknown as one that is too large.
    const auto number = static_cast<unsigned>(dest);
    if (!turn.isMine() || number >= kTrapDestinations) {
        return false;
    }
    Route route = routeOf(number);
    if (route.primary == nullptr && initDestinations(number)) {
        route = routeOf(number);
    }
    const bool result = route.primary != nullptr && route.primary->raiseTrap(trap);
    for (SNMPDestMgr* const copy : route.copies) {
        if (copy != nullptr) {
            copy->raiseTrap(trap);
        }
    }
    return result;
}

bool SNMPTrapRouter::raiseGenericTrap(LocalMgmtIfc::TrapDest dest, int genericTrap) {
    return raise(dest, genericTrap);
}

bool SNMPTrapRouter::raiseSpecificTrap(LocalMgmtIfc::TrapDest dest, const SNMPTrapData& data) {
    return raise(dest, data);
}

/// Of the list as it is now: item changes do not wait until the trap is sent.
SNMPTrapRouter::Route SNMPTrapRouter::routeOf(unsigned dest) {
    Route route;
    const std::lock_guard lock(m_tableMutex);
    const Destination& destination = m_destinations.at(dest);
    route.primary = destination.primary;
    if (destination.secondary) {
        std::copy(destination.secondary->begin(), destination.secondary->end(),
                  route.copies.begin());
    }
    return route;
}

bool SNMPTrapRouter::initDestinations(unsigned dest) {
    const bool result = setPrimaryDestination(dest);
    initSecondaryDestinations(dest);
    return result;
}

bool SNMPTrapRouter::setPrimaryDestination(unsigned dest) {
    service();  // is looked up without the lock
    const std::lock_guard lock(m_tableMutex);
    return setPrimary(dest);
}

/// Under the table's lock.
bool SNMPTrapRouter::setPrimary(unsigned dest) {
    Destination& destination = m_destinations.at(dest);
    if (destination.primary == nullptr && m_service != nullptr) {
        std::unique_ptr<SNMPDestMgr>& manager = m_managers.at(dest);
        if (!manager) {
            const TrapTags& tags = kTrapTags[dest];
            manager = std::make_unique<SNMPDestMgr>(m_service, tags.active, tags.address, tags.port,
                                                    tags.password);
        }
        destination.primary = manager.get();
        destination.secondary.reset();
    }
    const bool result = destination.primary != nullptr;
    VCMS_LOG(kLogDebug,
             "SNMPTrapRouter::setPrimaryDestination m_destinations.at(primaryID).first = %p, "
             "retVal = %d\n",
             static_cast<const void*>(destination.primary), result ? 1 : 0);
    return result;
}

void SNMPTrapRouter::initSecondaryDestinations(unsigned dest) {
    const char* const tag = kTrapTags[dest].copies;
    LocalMgmtIfc* const items = service();
    if (*tag == '\0' || items == nullptr) {
        return;
    }
    unsigned changes = 0;
    {
        const std::lock_guard lock(m_tableMutex);
        changes = m_switchChanges;
    }
    const std::string value = TrapItem::getValueFromVCMS(items, tag);
    setSecondaryDestinationByTagVal(tag, value);
    items->observeManageableData(tag, this);
    confirmSwitch(*items, tag, value, changes);
}

/// What changed between the reading and the observing was not told; what was told is newer than
/// what is read here.
void SNMPTrapRouter::confirmSwitch(LocalMgmtIfc& items, const char* tag, const std::string& applied,
                                   unsigned changesBefore) {
    const std::optional<std::string> value = TrapItem::read(&items, tag);
    const std::lock_guard lock(m_tableMutex);
    if (value && *value != applied && m_switchChanges == changesBefore) {
        applySwitch(tag, *value);
    }
}

bool SNMPTrapRouter::setSecondaryDestinationByTagVal(const std::string& tag,
                                                     const std::string& value) {
    const std::lock_guard lock(m_tableMutex);
    return applySwitch(tag, value);
}

/// Under the table's lock.
bool SNMPTrapRouter::applySwitch(const std::string& tag, const std::string& value) {
    const bool isOn = value == "true";
    if (!isOn && value != "false") {
        return false;
    }
    for (unsigned primary = 0; primary < kTrapDestinations; ++primary) {
        if (!tag.empty() && tag == kTrapTags[primary].copies) {
            updateSecondaryDestinationManagers(primary, kGeneralManager, isOn);
            return true;
        }
    }
    return false;
}

/// Under the table's lock.
void SNMPTrapRouter::updateSecondaryDestinationManagers(unsigned primary, unsigned secondary,
                                                        bool add) {
    VCMS_LOG(kLogDebug,
             "SNMPTrapRouter::updateSecondaryDestinationManagers primaryID = %d, secondaryID = %d, "
             "add = %d",
             static_cast<int>(primary), static_cast<int>(secondary), add ? 1 : 0);
    if (add) {
        addSecondary(primary, secondary);
    } else if (Managers* const list = m_destinations.at(primary).secondary.get()) {
        // The manager stays: it is the primary one of its own destination.
        std::erase(*list, m_managers.at(secondary).get());
    }
}

void SNMPTrapRouter::addSecondary(unsigned primary, unsigned secondary) {
    if (!setPrimary(secondary)) {
        return;
    }
    std::unique_ptr<Managers>& list = m_destinations.at(primary).secondary;
    if (!list) {
        list = std::make_unique<Managers>();
        list->reserve(kTrapDestinations);
    }
    SNMPDestMgr* const manager = m_destinations.at(secondary).primary;
    if (std::find(list->begin(), list->end(), manager) == list->end()) {
        list->push_back(manager);
    }
}

bool SNMPTrapRouter::manageableDataChanged(ManageableData& record) {
    const std::string tag = record.getRootId();
    std::string value;
    record.interogate(tag, tag, value);
    static constexpr char kChanged[] =
        "SNMPTrapRouter::manageableDataChanged changedTag = %s, newValue = %s\n";
    VCMS_LOG(kLogDebug, kChanged, tag.c_str(), value.c_str());
    bool isApplied = false;
    {
        const std::lock_guard lock(m_tableMutex);
        ++m_switchChanges;
        isApplied = applySwitch(tag, value);
    }
    if (!isApplied) {
        VCMS_LOG(kLogError, kChanged, tag.c_str(), value.c_str());
    }
    return isApplied;
}

void SNMPTrapRouter::deleteDestination(int dest) {
    const auto number = static_cast<unsigned>(dest);
    if (number >= kTrapDestinations) {
        return;
    }
    SNMPDestMgr* primary = nullptr;
    LocalMgmtIfc* items = nullptr;
    {
        const std::lock_guard lock(m_tableMutex);
        Destination& destination = m_destinations.at(number);
        std::swap(primary, destination.primary);
        destination.secondary.reset();
        items = m_service;
    }
    if (primary == nullptr) {
        return;
    }
    primary->close();
    if (*kTrapTags[number].copies != '\0') {
        items->stopObservingManageableData(kTrapTags[number].copies, this);
    }
}

}  // namespace vireo
