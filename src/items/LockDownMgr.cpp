#include "items/LockDownMgr.h"

#include "LogMacros.h"

namespace vireo {

LockDownMgr::LockDownMgr(LocalMgmtIfc& /*service*/, SvcRTEContext& /*context*/) {}

bool LockDownMgr::readLockedDownCache(const std::string& rootId, std::string& /*value*/) {
    VCMS_LOG(kLogWarning, "LockDownMgr - no lock list for %s", rootId.c_str());
    return false;
}

bool LockDownMgr::changeLockedDownCache(const std::string& rootId, const std::string& /*value*/) {
    VCMS_LOG(kLogWarning, "LockDownMgr - no lock list for %s, change refused", rootId.c_str());
    return false;
}

bool LockDownMgr::flushToDAS() {
    return false;
}

}  // namespace vireo
