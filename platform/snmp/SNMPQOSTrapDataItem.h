#pragma once

#include <utility>

#include "snmp/QosTrapFields.h"
#include "snmp/SNMPTrapDataItem.h"

namespace vireo {

/// One voice-quality report: a varbind for each row of `kQosTrapRows`, in their order, named
/// {1, 1, row}. Numbers travel as Gauge32, texts as OCTET STRING; of a longer text the first
/// `kLongestText` bytes are sent, and of a character that would not fit whole, nothing.
///
/// Text form ("qos"): the `Serializer` list of the values of all rows, numbers in decimal.
class VIREO_API SNMPQOSTrapDataItem : public SNMPTrapDataItem {
public:
    static constexpr std::string_view kKindName = "qos";
    /// In bytes: what a DisplayString holds.
    static constexpr std::size_t kLongestText = 255;

    /// What is not set by a function below is set here.
    QosTrapFields fields;

    void setLocalIPAddress(std::string address) { fields.localIPAddress = std::move(address); }
    void setRemoteIPAddress(std::string address) { fields.remoteIPAddress = std::move(address); }
    void setConsecutivePacketLoss(std::string counts) {
        fields.consecutivePacketLoss = std::move(counts);
    }
    void setConsecutiveGoodPackets(std::string counts) {
        fields.consecutiveGoodPackets = std::move(counts);
    }
    void setMACAddress(std::string address) { fields.macAddress = std::move(address); }

    void appendVarbinds(std::vector<TrapVarbind>& varbinds) const override;
    std::string_view kindName() const override { return kKindName; }
    void appendText(std::string& out) const override;
    bool takeText(std::string_view& in) override;
};

}  // namespace vireo
