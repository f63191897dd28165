#pragma once

#include <cstdint>
#include <string>

#include "MgmtAgentIfc.h"

namespace vireo {

class LocalMgmtIfc;
class SNMPTrapData;
struct QosTrapFields;

/// Turns each block of voice-quality statistics that is published into one trap to the QDC
/// collection unit. Keeps nothing between two blocks; called from the threads on which items
/// change.
class QDCReportMgr : public MgmtAgentIfc {
public:
    /// Observes the statistics of the six channels. `service` is not owned and outlives the
    /// manager; with null nothing is observed, read or sent.
    explicit QDCReportMgr(LocalMgmtIfc* service);

    /// The statistics of a channel, the one item of the record, were published.
    bool manageableDataChanged(ManageableData& record) override;
    bool setData(ManageableData& /*record*/) override { return false; }
    bool getData(ManageableData& /*record*/) override { return false; }
    bool resetUserData() override { return false; }

    /// Reports a block. True when the report was sent.
    bool sendQDCReport(const ManageableData& data);
    /// Makes `trap` the report of a block. What cannot be read is logged, and 0 or empty.
    void buildQDCReport(const ManageableData& data, SNMPTrapData& trap);

private:
    void fillFields(const ManageableData& data, QosTrapFields& fields);
    int specificTrapNo(const ManageableData& data);
    std::string getStringValueFromVCMS(const char* tag);
    std::string getStringValueFromMPS(const ManageableData& data, const char* tag);
    std::uint32_t getUintValueFromMPS(const ManageableData& data, const char* tag);

    LocalMgmtIfc* m_service;
};

}  // namespace vireo
