#pragma once

#include <string>

#include "Visibility.h"

namespace vireo {

class ManageableData;

/// The local management interface: through it the phone's services and user interfaces read and
/// write settings. Implemented by the client management service; other processes reach it by
/// message. Safe from every thread. Nothing is thrown.
class VIREO_API LocalMgmtIfc {
public:
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

    /// Forgets the last known values of other owners' items.
    virtual void invalidateVCMSCache() = 0;
};

}  // namespace vireo
