#include "reporting/SNMPTrapRouter.h"

#include "LogMacros.h"

namespace vireo {

void SNMPTrapRouter::init(LocalMgmtIfc* /*service*/) {
    VCMS_LOG(kLogDebug, "SNMPTrapRouter - Initializing by vcms\n");
}

}  // namespace vireo
