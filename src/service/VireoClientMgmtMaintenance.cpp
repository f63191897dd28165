#include "Boundary.h"
#include "service/Context.h"
#include "service/VireoClientMgmt.h"

// The part of the face that is about maintenance.

namespace vireo {

DeviceReset::Surroundings VireoClientMgmt::resetSurroundings() {
    return {.service = *this,
            .files = m_areas,
            .registry = m_registry,
            .cache = m_valueCache,
            .softwareType = [this] { return getSoftwareType(); },
            .passwords = [this] { return m_directory.passwordMgmtSvcIfc(); },
            .store = [this] { return m_directory.dataAccessIfc(); },
            .notifyGoingDown = [this] { m_directory.notifyGoingDown(); }};
}

int VireoClientMgmt::performFactoryReset(const std::string& password) {
    return guarded("performFactoryReset", 0,
                   [&] { return m_deviceReset.performFactoryReset(password); });
}

int VireoClientMgmt::verifyFactoryResetPassword(const std::string& password) {
    return guarded("verifyFactoryResetPassword", 1,
                   [&] { return m_deviceReset.verifyFactoryResetPassword(password); });
}

int VireoClientMgmt::performReboot(std::string reason) {
    return guarded("performReboot", 1, [&] { return m_deviceReset.performReboot(reason); });
}

int VireoClientMgmt::clearAllUserData() {
    return guarded("clearAllUserData", 0, [&] { return m_deviceReset.clearAllUserData(); });
}

bool VireoClientMgmt::resetUserData() {
    return guarded("resetUserData", false, [&] { return m_deviceReset.resetUserData(); });
}

}  // namespace vireo
