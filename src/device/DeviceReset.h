#pragma once

#include <functional>
#include <optional>
#include <string>

#include "LocalMgmtIfc.h"

namespace vireo {

class AgentRegistry;
class DataAccessServiceIfc;
class PasswordMgmtSvcIfc;
class UserFileAreas;
class ValueCache;

/// Factory reset, reboot and the clearing of user data. What fails on the way is logged and does
/// not stop the rest. Works on the thread of its caller.
class DeviceReset {
public:
    /// What it works with; everything outlives it. The functions answer null while there is no such
    /// service.
    struct Surroundings {
        LocalMgmtIfc& service;  ///< the one that this belongs to
        UserFileAreas& files;
        AgentRegistry& registry;
        ValueCache& cache;
        std::function<int()> softwareType;
        std::function<PasswordMgmtSvcIfc*()> passwords;
        std::function<DataAccessServiceIfc*()> store;
        std::function<void()> notifyGoingDown;
    };

    explicit DeviceReset(Surroundings surroundings) : m_with(std::move(surroundings)) {}

    // As `LocalMgmtIfc` has them.
    int performFactoryReset(const std::string& password);
    int performReboot(const std::string& reason);
    int clearAllUserData();

    /// Deliberate: 0 when the password is accepted; another number when it is refused, as every one
    /// is on a phone without a password service.
    int verifyFactoryResetPassword(const std::string& password);
    /// Resets the items that are the user's own. False when one is not there or was not written.
    bool resetUserData();

private:
    using UserType = LocalMgmtIfc::eUsertype;

    std::optional<UserType> visitorWithFiles();
    void deleteDownloadedFiles(std::optional<UserType> visitor);
    void deleteHostname();
    void clearAreas();
    void linkMusic();
    int resetAgents();

    const Surroundings m_with;
};

}  // namespace vireo
