#pragma once

#include "Visibility.h"

namespace vireo {

class ManageableData;

/// What an owner of items, or an observer of them, implements. Called from the thread on which the
/// read, write or change happened, without a lock held except in writes of several items; it may
/// call back into the service.
class VIREO_API MgmtAgentIfc {
public:
    virtual ~MgmtAgentIfc() = default;
    /// Takes new values of own items. False when any was refused; the record then says why.
    virtual bool setData(ManageableData& record) = 0;
    /// Fills in the values of own items.
    virtual bool getData(ManageableData& record) = 0;
    /// Observed items changed; the record holds the new values.
    virtual bool manageableDataChanged(ManageableData& record) = 0;
    /// Forgets what belongs to the user.
    virtual bool resetUserData() = 0;
};

}  // namespace vireo
