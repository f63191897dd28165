#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Visibility.h"
#include "snmp/TrapVarbind.h"

namespace vireo {

/// A part of what a specific trap carries. Owned by its `SNMPTrapData`.
class VIREO_API SNMPTrapDataItem {
public:
    virtual ~SNMPTrapDataItem() = default;

    /// Appends the item's varbinds in the order in which they are sent.
    virtual void appendVarbinds(std::vector<TrapVarbind>& varbinds) const = 0;
    /// The word by which the text form of a trap names this kind of item.
    virtual std::string_view kindName() const = 0;
    /// Appends the text form of the item's values.
    virtual void appendText(std::string& out) const = 0;
    /// Takes the item's values off the front of `in`. False on malformed or short text; neither
    /// `in` nor the item is changed then.
    virtual bool takeText(std::string_view& in) = 0;

protected:
    SNMPTrapDataItem() = default;
    SNMPTrapDataItem(const SNMPTrapDataItem&) = default;
    SNMPTrapDataItem& operator=(const SNMPTrapDataItem&) = default;
};

}  // namespace vireo
