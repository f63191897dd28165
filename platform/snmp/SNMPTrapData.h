#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Visibility.h"
#include "data/Serializable.h"
#include "snmp/SNMPTrapDataItem.h"

namespace vireo {

/// What one specific trap says: its number and its items. One instance is used by one thread at a
/// time; it can be moved, not copied.
///
/// Text form, in `Serializer` texts: the specific number as int, the count of items as int, and for
/// each item the name of its kind as string ("qos", "varbinds") and its own text form, as its class
/// has it. The trap 6 without items is `6;0;`.
class VIREO_API SNMPTrapData : public Serializable {
public:
    SNMPTrapData() = default;
    SNMPTrapData(SNMPTrapData&&) noexcept = default;
    SNMPTrapData& operator=(SNMPTrapData&&) noexcept = default;

    /// The specific number of a new one is 0.
    void setSpecificTrapNo(int number) { m_specificTrapNo = number; }
    int specificTrapNo() const { return m_specificTrapNo; }

    /// Appends an item and owns it from now on; null is ignored.
    void addSNMPTrapDataItem(std::unique_ptr<SNMPTrapDataItem> item);
    const std::vector<std::unique_ptr<SNMPTrapDataItem>>& items() const { return m_items; }

    /// The varbinds of all items, in the order in which they are sent.
    std::vector<TrapVarbind> varbinds() const;

    std::string serialize() const override;
    /// Makes this the trap of the text. False, and no change, when the text is malformed, names an
    /// unknown kind of item, or goes on behind its end.
    bool deserialize(const std::string& text) override;

private:
    int m_specificTrapNo = 0;
    std::vector<std::unique_ptr<SNMPTrapDataItem>> m_items;
};

}  // namespace vireo
