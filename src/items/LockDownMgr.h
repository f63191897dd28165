#pragma once

#include <string>

namespace vireo {

class LocalMgmtIfc;
class SvcRTEContext;

/// Knows which items and menus the administrator has locked. Lock lists are not kept yet: every
/// read and change answers failure, so nobody takes an unlocked menu for a locked one.
class LockDownMgr {
public:
    LockDownMgr(LocalMgmtIfc& service, SvcRTEContext& context);

    bool readLockedDownCache(const std::string& rootId, std::string& value);
    bool changeLockedDownCache(const std::string& rootId, const std::string& value);
    bool flushToDAS();
};

}  // namespace vireo
