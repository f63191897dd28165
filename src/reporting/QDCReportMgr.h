#pragma once

namespace vireo {

class LocalMgmtIfc;

/// Turns voice-quality statistics into traps. Statistics are not observed yet.
class QDCReportMgr {
public:
    /// `service` is not owned and outlives the manager.
    explicit QDCReportMgr(LocalMgmtIfc* /*service*/) {}
};

}  // namespace vireo
