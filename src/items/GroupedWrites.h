#pragma once

#include "items/WriteGroup.h"

namespace vireo {

/// The service's entrance for writes that came by message, which may be carried out together.
/// Message thread only; throws nothing.
class GroupedWrites {
public:
    virtual ~GroupedWrites() = default;

    /// Whether `setDataInGroup` takes the record.
    virtual bool takesInGroup(const ManageableData& record) = 0;
    /// Like `LocalMgmtIfc::setData`, but the outcome comes later, by `finishGroup` at the latest.
    virtual void setDataInGroup(ManageableData record, WriteGroup::Done done) = 0;
    virtual void finishGroup() = 0;
    /// The same, when the group has a write of one of the record's items, or the record names a
    /// collection. Before a read, so that no reader sees what may still be lost.
    virtual void finishGroupBefore(const ManageableData& record) = 0;
};

}  // namespace vireo
