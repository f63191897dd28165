#pragma once

namespace vireo {

class LocalMgmtIfc;

/// Routes traps to their receivers. No receiver can be set up yet.
class SNMPTrapRouter {
public:
    /// `service` answers for the receivers' settings; not owned, outlives the router.
    void init(LocalMgmtIfc* service);
};

}  // namespace vireo
