#pragma once

#include <list>
#include <string>

#include "Visibility.h"

namespace vireo {

class ManageableData;
class MgmtAgentIfc;

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

    /// Adds reasons why the phone is busy to the mask of them, and writes the mask as a decimal
    /// number to the item "phone-busy-status", so that its observers are told.
    virtual void setPhoneBusyStatus(unsigned bits) = 0;
    /// The same, taking reasons away.
    virtual void clearPhoneBusyStatus(unsigned bits) = 0;
    /// The mask: 0 when the phone is idle, bit value 1 a call, 512 a software update.
    virtual unsigned retrievePhoneBusyStatus() = 0;

    /// Forgets the last known values of other owners' items.
    virtual void invalidateVCMSCache() = 0;
};

}  // namespace vireo
