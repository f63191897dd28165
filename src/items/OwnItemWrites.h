#pragma once

#include <string>

#include "items/OwnItemKind.h"

namespace vireo {

class ManageableData;
class OwnItems;

/// What one write changes of own items that have something else than the store behind them: locks,
/// file requests, and warnings of memory trouble.
class OwnItemWrites {
public:
    /// Both outlive this.
    OwnItemWrites(OwnItems& items, ManageableData& record) : m_items(items), m_record(record) {}

    /// Whether items of a kind are changed here.
    static bool areOf(OwnItemKind kind) {
        return kind == OwnItemKind::eLockDown || kind == OwnItemKind::eFileRequest ||
               kind == OwnItemKind::eMemoryWarning;
    }
    /// Changes an item of such a kind to what the record says. False, with a refusal in the record,
    /// when it cannot be.
    bool change(OwnItemKind kind, const std::string& rootId);
    /// Has all changes take effect together. False when that failed; what became of file requests
    /// is in the record then, as refusals.
    bool flush();

private:
    bool changeLock(const std::string& rootId, const std::string& value);
    bool changeFileRequest(const std::string& rootId, const std::string& value);
    void warnOfMemory(const std::string& value);
    bool flushFileRequests();

    OwnItems& m_items;
    ManageableData& m_record;
    bool m_hasChangedLock = false;
    bool m_hasFileRequest = false;
};

}  // namespace vireo
