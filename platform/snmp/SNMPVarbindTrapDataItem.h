#pragma once

#include "snmp/SNMPTrapDataItem.h"

namespace vireo {

/// Any varbinds, given one by one: for traps that have no item class of their own.
///
/// Text form ("varbinds"): the `Serializer` list of three strings for each varbind, in order: the
/// sub-identifiers as decimal numbers with points between them, the kind ("i" Integer32,
/// "g" Gauge32, "s" OCTET STRING) and the value, numbers in decimal.
class VIREO_API SNMPVarbindTrapDataItem : public SNMPTrapDataItem {
public:
    /// The name has at least one sub-identifier and at most `kLongestName`.
    void add(std::vector<std::uint32_t> subIdentifiers, TrapValue value);

    void appendVarbinds(std::vector<TrapVarbind>& varbinds) const override;
    std::string_view kindName() const override { return kKindName; }
    void appendText(std::string& out) const override;
    bool takeText(std::string_view& in) override;

    static constexpr std::string_view kKindName = "varbinds";
    /// With the enterprise in front of it, a name stays below the 128 sub-identifiers that an
    /// object identifier may have.
    static constexpr std::size_t kLongestName = 64;

private:
    std::vector<TrapVarbind> m_varbinds;
};

}  // namespace vireo
