#pragma once

#include <string>

#include "LocalMgmtIfc.h"

namespace vireo {

class ManageableData;

/// Sees to it that the ringer of distinctive ringing does not vanish while it is in use. Safe from
/// every thread.
class RingerGuard {
public:
    /// `items` outlives it.
    explicit RingerGuard(LocalMgmtIfc& items) : m_items(items) {}

    /// Whether the ringer file may be deleted. One that is in use is switched off first; it may not
    /// when that is refused.
    bool allowsDeletion(const std::string& fileName);

private:
    bool switchOff(const ManageableData& record);
    bool write(const ManageableData& before, const std::string& xml);

    LocalMgmtIfc& m_items;
};

}  // namespace vireo
