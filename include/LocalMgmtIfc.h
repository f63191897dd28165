#pragma once

#include <list>
#include <string>

#include "Visibility.h"

namespace vireo {

class Executable;
class ManageableData;
class MemoryInfo;
class MgmtAgentIfc;
class SNMPTrapData;

/// The local management interface: through it the phone's services and user interfaces read and
/// write settings. Implemented by the client management service; other processes reach it by
/// message. Safe from every thread. Nothing is thrown.
class VIREO_API LocalMgmtIfc {
public:
    /// The kinds of files that the phone receives. Values of 19 and above, and negative ones, come
    /// from outside: every function takes them for unsupported.
    enum eFiletype : int {
        FILETYPE_INVALID = 0,
        FILETYPE_SOFTWARE = 1,
        FILETYPE_MUSIC_ON_HOLD = 2,
        FILETYPE_PICTURE = 3,
        FILETYPE_LOGO = 4,
        FILETYPE_MIDLET = 5,
        FILETYPE_LDAP = 6,
        FILETYPE_TONE = 7,
        FILETYPE_RESERVED_8 = 8,
        FILETYPE_SCREENSAVER = 9,
        FILETYPE_RESERVED_10 = 10,
        FILETYPE_RINGER = 11,
        FILETYPE_HELP = 13,
        FILETYPE_JAR = 14,
        FILETYPE_JAD = 15,
        FILETYPE_PHD = 16,
        FILETYPE_VR_AUDIO = 17,
        FILETYPE_VR_PATTERN = 18,
    };

    /// Whose files are meant. Other values come from outside.
    enum eUsertype : int {
        USER_UNSET = 0,  ///< before the first user change
        USER_BASE = 1,   ///< the phone's own user
        USER_VISITOR = 2,
        USER_MIGRATE_TO_VISITOR = 3,
        USER_DEFAULT = 4,
        USER_CLEAR_DATA_VISITOR = 5,
        USER_BASE_KSP = 6,
        USER_VISITOR_KSP = 7,
        USER_CLEAR_DATA_VISITOR_KSP = 8,
    };

    /// How files are fetched. Other values come from outside and are refused.
    enum eDownloadProtocol : int { DOWNLOAD_FTP = 1, DOWNLOAD_HTTPS = 2 };

    /// Receivers of traps. Other values come from outside: nothing is sent to them.
    enum TrapDest : int {
        TRAP_DEST_SNMP_MANAGER = 0,         ///< the general SNMP manager
        TRAP_DEST_QDC_COLLECTION_UNIT = 1,  ///< that of voice-quality reports
        TRAP_DEST_DIAGNOSTIC = 2,
    };

    virtual ~LocalMgmtIfc() = default;

    /// Writes every item of the record. True when all were accepted; else the record carries the
    /// refusals, and what was not refused is written. Observers have been told when
    /// it returns; of a write that an agent makes while it is being called, a moment later.
    virtual bool setData(ManageableData& record) = 0;
    /// Fills in the documents of every item of the record. True when all could be read; one that
    /// fails does not stop the others.
    virtual bool getData(ManageableData& record) = 0;
    /// Reads one simple value, also from the value cache. False leaves `value` as it was.
    virtual bool getData(std::string tag, std::string& value) = 0;

    /// The name of the item's schema, empty when the item is unknown.
    virtual std::string findSchemaName(const std::string& tag) = 0;
    /// The text form of a schema, empty when it is unknown.
    virtual std::string exportSchema(const std::string& schemaName) = 0;
    /// Puts a schema into the record. False when it is unknown; the record is unchanged then.
    virtual bool getSchema(const std::string& schemaName, ManageableData& record) = 0;

    /// Makes `agent` (not owned) the owner of the items of `managementId`. With `bulk` all items of
    /// one request come to it in one record, else each in its own. What was kept for the absent
    /// owner is forgotten. False when the id has an owner already, which stays.
    virtual bool registerManagementIdentity(const std::string& managementId, MgmtAgentIfc* agent,
                                            bool bulk) = 0;
    virtual bool registerManagementIdentity(const std::string& managementId,
                                            MgmtAgentIfc* agent) = 0;

    /// Tells `agent` (not owned) of every change of the item, of each item of the collection, or of
    /// all items when `rootId` is "all-data". With `bulk` the changes of one request come in one
    /// record, else each in its own. Asking twice means being told twice. 1, or 0 when there is no
    /// such item; of a collection or a list: 0 when any failed, those that exist are observed.
    virtual int observeManageableData(const std::string& rootId, MgmtAgentIfc* agent,
                                      bool bulk) = 0;
    virtual int observeManageableData(const std::string& rootId, MgmtAgentIfc* agent) = 0;
    virtual int observeManageableData(const std::list<std::string>& rootIds, MgmtAgentIfc* agent,
                                      bool bulk) = 0;
    virtual int observeManageableData(const std::list<std::string>& rootIds,
                                      MgmtAgentIfc* agent) = 0;
    /// Takes one observation of the item back, the oldest. True also when there was none; false for
    /// a collection and for what is no item.
    virtual bool stopObservingManageableData(const std::string& rootId, MgmtAgentIfc* agent) = 0;

    /// An owner says that its items changed; the record holds the new values. Observers are told.
    /// The number of call-backs that this makes.
    virtual unsigned manageableDataChanged(ManageableData& record) = 0;

    /// How many files of the type a user may keep: 0 where nothing is laid down, -1 without end.
    virtual int getFileTypeCountLimit(eFiletype type) = 0;
    /// How many characters a file name of the type may have; 0 where nothing is laid down.
    virtual int getFileTypeNameLimit(eFiletype type) = 0;
    /// Empty: no type carries metadata.
    virtual std::string getFileTypeMetadata(eFiletype type) = 0;

    /// Appends the directory of the type's files to `path`, as the current user has them; relative
    /// to the storage root. False for an unsupported type; the user's directory is appended then.
    virtual bool getFilePathFromType(eFiletype type, std::string& path) = 0;
    virtual bool getFilePathFromType(eFiletype type, std::string& path, eUsertype user) = 0;
    /// Checks a file of the current user by its name without directory: its size, and whether sound
    /// can be played. False when it was rejected; what is too large is deleted.
    virtual bool validateFile(eFiletype type, const std::string& fileName) = 0;

    // The users' files. Every user has an area of files, which begins with links to the files that
    // were deployed with the phone; see docs/user-files.md.
    /// Replaces `files` (not null) by the full paths of the user's files of the type, links among
    /// them, in ascending order. The links of the area are brought up to date first. False, with
    /// an empty list, for an unsupported type; what cannot be read is left out, with an error line.
    virtual bool getListOfFilesOfType(eFiletype type, std::list<std::string>* files) = 0;
    virtual bool getListOfFilesOfType(eFiletype type, std::list<std::string>* files,
                                      eUsertype user) = 0;
    /// Deletes a file of the current user, by its name without directory. A link to a deployed file
    /// goes to the deleted ones, so that it is not made again. False, and nothing is changed, for
    /// what is no file name, for a missing file, and for the ringer in use that cannot be switched
    /// off.
    virtual bool deleteFile(eFiletype type, const std::string& name) = 0;
    /// Deletes all files of one type of a user and makes the links to the deployed files anew; a
    /// visitor's screensavers and ringers stay empty. True for pictures, screensavers, ringers, JAD
    /// and PHD files; the other types are not touched.
    virtual bool cleanupUserData(eFiletype type, eUsertype user) = 0;
    /// Makes another user the current one and clears, or fills, the visitor's area as the switch
    /// asks for. True, also for a value that names no user, which changes nothing.
    virtual bool changeCurrentUser(eUsertype user) = 0;
    /// Clears the area of the visitor who moves between phones. True.
    virtual bool clearMobileUserData() = 0;
    /// Identity and name of the storage that the files are on. True; both are unchanged when they
    /// cannot be found out.
    virtual bool getIDAndDisplayName(std::string& id, std::string& displayName) = 0;
    /// How much room there is for users' files. False when it cannot be found out.
    virtual bool getUserDataSpaceInfo(MemoryInfo& info) = 0;

    // Downloads. One at a time: a start while a transfer or a burn is under way answers false and
    // leaves that one alone. What comes in is checked, its outcome and time are written to the
    // items "dl-...-last-status" and "dl-...-last-time", and a software image is burnt.
    /// Starts the download that the items of the type describe, and marks the phone busy with a
    /// software update until it ends.
    virtual bool startDownload(eFiletype type) = 0;
    /// The same without the mark; `callback` (not owned, outlives the download; null, or what is no
    /// `LocalMgmtCallbackIfc`, is nobody) hears of its progress and its end.
    virtual bool startDownload(eFiletype type, Executable* callback) = 0;
    /// Starts a download with everything given, and waits for its end. Not from a call-back of a
    /// write of several items.
    virtual bool startDownload(eDownloadProtocol protocol, const std::string& port,
                               const std::string& server, const std::string& userName,
                               const std::string& password, eFiletype type,
                               const std::string& sourcePath, const std::string& fileName) = 0;
    /// The same without waiting. During a call a software image is only fetched with
    /// `overrideBusy`.
    virtual bool startDownload(eDownloadProtocol protocol, const std::string& port,
                               const std::string& server, const std::string& userName,
                               const std::string& password, eFiletype type,
                               const std::string& sourcePath, const std::string& fileName,
                               Executable* callback, bool overrideBusy) = 0;
    /// Percent of the current or last download when it is of that type and, unless `fileName` is
    /// empty, of that file: 0 to 100, negative when it failed; -1 when it is another one.
    virtual int requestCurrentDownloadStatus(eFiletype type, const std::string& fileName) = 0;
    /// Has the pictures of the phone book read again.
    virtual void refreshPictureClips() = 0;

    /// Adds reasons why the phone is busy to the mask of them, and writes the mask as a decimal
    /// number to the item "phone-busy-status", so that its observers are told.
    virtual void setPhoneBusyStatus(unsigned bits) = 0;
    /// The same, taking reasons away.
    virtual void clearPhoneBusyStatus(unsigned bits) = 0;
    /// The mask: 0 when the phone is idle, bit value 1 a call, 512 a software update.
    virtual unsigned retrievePhoneBusyStatus() = 0;

    // Traps. Whether, where to and with which password a receiver gets them, the items of the
    // receiver say at the moment of sending. One trap is sent at a time. A receiver that wants them
    // confirmed gets them soon after; true then says that the trap waits for its turn.
    /// Sends the generic trap `trap`, 0 to 5, and copies of it where the switches say so. True when
    /// it was sent to `dest`; false when not, and when the receiver is unknown or switched off, or
    /// the calling thread is raising another one. While the calling thread is in a write of several
    /// items it does not wait: false when another thread is sending.
    virtual bool raiseGenericTrap(TrapDest dest, int trap) = 0;
    /// The same with a trap of the phone's own; `data` stays as it is.
    virtual bool raiseSpecificTrap(TrapDest dest, SNMPTrapData& data) = 0;

    /// Forgets the last known values of other owners' items.
    virtual void invalidateVCMSCache() = 0;

    // Maintenance. What fails on the way is logged and does not stop the rest.
    /// Deletes what was downloaded, the users' files and the network settings, if `password` is the
    /// right one. 1 when a reboot was started, as it is when a changed setting needs one. Else 0:
    /// the phone is reset, or the password was refused and nothing has changed.
    virtual int performFactoryReset(const std::string& password) = 0;
    /// Records the reason and reboots the phone, soon after this has returned. Always 1.
    virtual int performReboot(std::string reason) = 0;
    /// Has every registered agent reset the user's data, in the order of the management ids, resets
    /// the service's own, and the files of the current user. The answer of the last agent, 0
    /// without any. The registry is held meanwhile: another thread that registers waits.
    virtual int clearAllUserData() = 0;
};

}  // namespace vireo
