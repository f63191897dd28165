#include "device/DeviceReset.h"

#include <algorithm>
#include <iterator>
#include <list>
#include <set>

#include "Boundary.h"
#include "MgmtAgentIfc.h"
#include "data/ManageableData.h"
#include "device/GPALAdmin.h"
#include "device/PlatformShell.h"
#include "device/Storage.h"
#include "files/FileTypeCatalogue.h"
#include "files/UserFileAreas.h"
#include "items/AgentRegistry.h"
#include "items/ValueCache.h"
#include "services/DataAccessServiceIfc.h"
#include "services/PasswordMgmtSvcIfc.h"

namespace vireo {
namespace {

using Type = LocalMgmtIfc::eFiletype;

constexpr const char* kComponent = "Vireo Client Management";
constexpr const char* kReset = "performFactoryReset";

/// The types whose files a factory reset deletes, in this order.
constexpr Type kDeletedTypes[] = {
    LocalMgmtIfc::FILETYPE_MIDLET,        LocalMgmtIfc::FILETYPE_LOGO,
    LocalMgmtIfc::FILETYPE_LDAP,          LocalMgmtIfc::FILETYPE_JAR,
    LocalMgmtIfc::FILETYPE_JAD,           LocalMgmtIfc::FILETYPE_PHD,
    LocalMgmtIfc::FILETYPE_VR_AUDIO,      LocalMgmtIfc::FILETYPE_VR_PATTERN,
    LocalMgmtIfc::FILETYPE_MUSIC_ON_HOLD,
};
// Deliberate: any path that holds this, slash included, is kept; "MyGenericMidlet.jad" is not.
constexpr const char* kKeptName = "/GenericMidlet.ja";

constexpr const char* kDefaults = "/Vireo_Deploy/";
constexpr const char* kNetworking = "/Vireo_Deploy/networking/";
constexpr const char* kHostname = "altHostname.sh";
constexpr const char* kClearNetworking = "/bin/rm -rf /data/networking/*";

constexpr const char* kLockTimeout = "phone-lock-timeout";
constexpr const char* kLockTimeoutOfUsers = "5";

constexpr int kSip = 1;
constexpr int kTdm = 3;

}  // namespace

int DeviceReset::verifyFactoryResetPassword(const std::string& password) {
    VCMS_LOG(kLogDebug, "VireoClientMgmt::verifyFactoryResetPassword pwd = %s", password.c_str());
    PasswordMgmtSvcIfc* const passwords = m_with.passwords();
    if (passwords == nullptr) {
        return 1;  // Deliberate: without a password service every factory reset is refused.
    }
    VCMS_LOG(kLogDebug, "VireoClientMgmt::verifyFactoryResetPassword pwdMgmtIfc not NULL");
    return passwords->verifyPassword(PasswordMgmtSvcIfc::kFactoryReset, password);
}

int DeviceReset::performFactoryReset(const std::string& password) {
    VCMS_LOG(kLogDebug, "VireoClientMgmt::performFactoryReset: pwd = %s", password.c_str());
    if (verifyFactoryResetPassword(password) != 0) {
        VCMS_LOG(kLogError, "Invalid factory reset password! input=%s", password.c_str());
        return 0;  // Deliberate: the same as after a reset that needs no reboot.
    }
    VCMS_LOG(kLogDebug, "VireoClientMgmt::performFactoryReset: password verified");
    const std::optional<UserType> visitor = visitorWithFiles();
    deleteDownloadedFiles(visitor);
    deleteHostname();
    clearAreas();
    linkMusic();
    PlatformShell::run(kClearNetworking);
    guardedCall(kReset, [this] { m_with.cache.invalidate(); });
    DataAccessServiceIfc* const store = m_with.store();
    return store != nullptr && store->isRebootRequired()
               ? m_with.service.performReboot("FactoryReset: requires reboot.")
               : 0;
}

// Deliberate: a visitor of another kind than the software's keeps what he downloaded.
std::optional<LocalMgmtIfc::eUsertype> DeviceReset::visitorWithFiles() {
    const UserType own =
        m_with.softwareType() == kSip ? LocalMgmtIfc::USER_VISITOR : LocalMgmtIfc::USER_VISITOR_KSP;
    return m_with.files.currentUser() == own ? std::optional(own) : std::nullopt;
}

void DeviceReset::deleteDownloadedFiles(std::optional<UserType> visitor) {
    for (const Type type : kDeletedTypes) {
        std::list<std::string> paths;
        std::list<std::string> more;
        guardedCall(kReset, [&] {
            m_with.files.getListOfFilesOfType(type, &paths, LocalMgmtIfc::USER_BASE);
        });
        if (visitor) {
            guardedCall(kReset, [&] { m_with.files.getListOfFilesOfType(type, &more, *visitor); });
            paths.splice(paths.end(), more);
        }
        std::set<std::string> deleted;  // some types of both users are in one directory
        for (const std::string& path : paths) {
            if (path.find(kKeptName) != std::string::npos || !deleted.insert(path).second) {
                continue;
            }
            VCMS_LOG(kLogDebug, "VireoClientMgmt::performFactoryReset deleting - %s\n",
                     path.c_str());
            guardedCall(kReset, [&] {
                const std::lock_guard lock(m_with.files.directoryLock());
                Storage::deleteFile(path);
            });
        }
    }
}

void DeviceReset::deleteHostname() {
    const bool isDeleted = guarded(kReset, false, [] {
        std::list<std::string> names;
        Storage::getListOfFilesAndLinksByDirectory(kNetworking, names, false);
        if (std::find(names.begin(), names.end(), kHostname) == names.end()) {
            return false;
        }
        Storage::deleteFile(kNetworking, kHostname);
        return true;
    });
    if (isDeleted) {
        VCMS_LOG(kLogDebug, "Deleted altHostname.sh");
    } else {
        VCMS_LOG(kLogDebug, "Failed to Delete altHostname.sh");
    }
}

void DeviceReset::clearAreas() {
    const auto clear = [this](UserType user) {
        guardedCall(kReset, [&] { m_with.files.resetUserFiles(user, true); });
        guardedCall(kReset, [&] { m_with.files.emptyDeletedFolder(user); });
    };
    clear(LocalMgmtIfc::USER_BASE_KSP);
    // Deliberate: this software leaves the visitor's area alone.
    if (m_with.softwareType() != kTdm) {
        clear(LocalMgmtIfc::USER_VISITOR_KSP);
    }
}

/// Music is deleted like what was downloaded, but has defaults, too. All users have the same.
void DeviceReset::linkMusic() {
    guardedCall(kReset, [&] {
        const Type music = LocalMgmtIfc::FILETYPE_MUSIC_ON_HOLD;
        std::string directory;
        FileTypeCatalogue::appendDirectory(directory, LocalMgmtIfc::USER_BASE, music);
        Storage::initStorageLocation(directory, 0, false);
        m_with.files.resetUserFileDefaults(
            directory, kDefaults + std::string(FileTypeCatalogue::row(music).directory));
    });
}

int DeviceReset::performReboot(const std::string& reason) {
    guardedCall("notifyGoingDown", [this] { m_with.notifyGoingDown(); });
    logExc(reason.c_str(), "", kComponent, __LINE__, 1);
    VCMS_LOG(kLogReboot, "%s", reason.c_str());
    GPALAdmin::rebootDevice();
    return 1;  // Deliberate: also when the phone cannot be rebooted, which is logged.
}

int DeviceReset::clearAllUserData() {
    VCMS_LOG(kLogDebug, "VireoClientMgmt::clearAllUserData()");
    const int result = resetAgents();
    resetUserData();
    const UserType user = m_with.files.currentUser();
    guardedCall("clearAllUserData", [&] { m_with.files.resetUserFiles(user, true, true); });
    guardedCall("clearAllUserData", [&] { m_with.files.emptyDeletedFolder(user); });
    guardedCall("clearAllUserData", [this] { m_with.cache.invalidate(); });
    VCMS_LOG(kLogDebug, "VireoClientMgmt::clearAllUserData() completed");
    return result;
}

/// Who registers meanwhile, from within a call, is not called.
int DeviceReset::resetAgents() {
    int result = 0;
    const RegistryHold hold(m_with.registry.semaphore());
    for (const MgmtAgentDetails& each : m_with.registry.agents()) {
        // Deliberate: the last answer alone counts.
        result =
            guarded("resetUserData of an agent", false, [&] { return each.agent->resetUserData(); })
                ? 1
                : 0;
    }
    return result;
}

bool DeviceReset::resetUserData() {
    VCMS_LOG(kLogDebug, "VireoClientMgmt::resetUserData()");
    ManageableData present;
    std::string value;
    present.addRootId(kLockTimeout, nullptr);
    if (!m_with.service.getData(present) ||
        !present.interogate(kLockTimeout, kLockTimeout, value)) {
        VCMS_LOG(kLogDebug, "VireoClientMgmt::resetUserData() VCMS item not found");
        return false;
    }
    if (value == kLockTimeoutOfUsers) {
        return true;  // Deliberate: nobody is told of a value that stays.
    }
    ManageableData fresh;
    fresh.populate(kLockTimeout, kLockTimeout, kLockTimeoutOfUsers);
    const bool isWritten = m_with.service.setData(fresh);
    if (!isWritten) {
        VCMS_LOG(kLogError, "VireoClientMgmt::resetUserData method failed to write Feature");
    }
    return isWritten;
}

}  // namespace vireo
