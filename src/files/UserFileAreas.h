#pragma once

#include <functional>
#include <list>
#include <mutex>
#include <string>

#include "LocalMgmtIfc.h"
#include "files/AreaCleanup.h"
#include "files/DefaultLinks.h"
#include "files/FileMigration.h"
#include "files/FileValidator.h"
#include "files/RingerGuard.h"
#include "files/UserSwitch.h"

namespace vireo {

struct AreaPaths;

/// The users' files: what each user has of the files that were deployed with the phone, and of his
/// own. In an area a deployed file (a default) is a link to it; one that the user deleted is a link
/// in the area's "deleted" directory, and a file that came otherwise is a file. Safe from every
/// thread.
class UserFileAreas {
public:
    /// What it works with. `items` outlives it; `mobility` answers null while there is no such
    /// service.
    struct Surroundings {
        LocalMgmtIfc& items;
        FileValidator::MobilitySource mobility;
        std::function<int()> softwareType;
    };

    explicit UserFileAreas(Surroundings surroundings);

    LocalMgmtIfc::eUsertype currentUser() const { return m_switch.currentUser(); }
    /// A leaf: held while a directory of the users' files is changed, and never across a call out.
    std::mutex& directoryLock() { return m_directoryLock; }

    // Listing and deleting, as `LocalMgmtIfc` has them.
    bool getListOfFilesOfType(LocalMgmtIfc::eFiletype type, std::list<std::string>* files,
                              LocalMgmtIfc::eUsertype user);
    /// With `notifyMobility` the mobility service hears of a picture that is gone. Throws
    /// `StorageError` when the file cannot be deleted.
    bool deleteFileForUserType(LocalMgmtIfc::eFiletype type, const std::string& name,
                               bool notifyMobility);

    // Clearing.
    /// As `LocalMgmtIfc` has it. With `restoreAll` a visitor gets the default screensavers and
    /// ringers, too; with `notifyMobility` the mobility service clears its picture.
    bool cleanupUserData(LocalMgmtIfc::eFiletype type, LocalMgmtIfc::eUsertype user,
                         bool notifyMobility, bool restoreAll);
    /// The same for pictures, screensavers and ringers, of a visitor without `restoreAll` also for
    /// JAD and PHD files. Always 0.
    int resetUserFiles(LocalMgmtIfc::eUsertype user, bool notifyMobility, bool restoreAll);
    int resetUserFiles(LocalMgmtIfc::eUsertype user, bool notifyMobility);
    /// Of the current user; the mobility service is told.
    int resetUserFiles();
    /// Forgets which defaults the user deleted.
    void emptyDeletedFolder(LocalMgmtIfc::eUsertype user);
    /// Makes a link in `userDirectory` to every file of `defaultsDirectory`; both end in "/", the
    /// second may be a path of the phone such as "/Vireo_Deploy/music/". What is there already
    /// stays.
    void resetUserFileDefaults(const std::string& userDirectory,
                               const std::string& defaultsDirectory);

    // Users.
    /// True. Values that name no user are ignored.
    bool changeCurrentUser(LocalMgmtIfc::eUsertype user);
    /// True.
    bool clearMobileUserData();
    /// Copies the current user's files of most types into the area of `to`. True; what cannot be
    /// copied has an error line.
    bool migrateFileSpace(LocalMgmtIfc::eUsertype from, LocalMgmtIfc::eUsertype to);

private:
    bool removeOrBury(const std::string& name, const AreaPaths& paths);

    const Surroundings m_surroundings;
    std::mutex m_directoryLock;
    DefaultLinks m_links;
    RingerGuard m_ringerGuard;
    AreaCleanup m_cleanup;
    FileMigration m_migration;
    UserSwitch m_switch;
};

}  // namespace vireo
