#pragma once

namespace vireo {

class MgmtAgentIfc;

/// A registered agent or observer.
struct MgmtAgentDetails {
    MgmtAgentIfc* agent = nullptr;  ///< not owned
    bool flag = false;              ///< wants the changes or requests of one call in one record
};

}  // namespace vireo
