#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "sync/Semaphore.h"

namespace vireo {

class ItemCatalogue;
class ManageableData;

/// The last known texts of items, by tag. Safe from every thread.
///
/// A value that was read or written elsewhere reaches the cache a moment later, and changes can
/// overtake each other on the way. So whoever brings one takes a `mark` before the reading or
/// writing starts; a value whose tag has changed since is not believed.
class ValueCache {
public:
    using Mark = std::uint64_t;

    explicit ValueCache(const ItemCatalogue& catalogue);

    /// False leaves `value` as it was.
    bool fetch(const std::string& tag, std::string& value);
    /// Inserts or overwrites, unless the tag is never cached.
    void update(const std::string& tag, const std::string& value);
    /// Takes every item of the record that the record has a value for.
    void update(const ManageableData& record);
    void invalidate();

    Mark mark();
    /// Puts in a value that was read since `mark`, unless the tag has changed since.
    void fill(Mark mark, const std::string& tag, const std::string& value);
    /// Whether `fill` and `correct` do anything for the item.
    bool takes(const std::string& tag) const;
    /// The item was changed to `value`, by something that began at `mark`. Forgets the tag when
    /// there is no value, or when another change came in between: which one was last is not known.
    void correct(Mark mark, const std::string& tag, const std::optional<std::string>& value);

private:
    struct Entry {
        std::optional<std::string> value;
        Mark changedAt = 0;
    };

    bool isUnchanged(Mark mark, const Entry& entry) const {
        return entry.changedAt <= mark && m_invalidatedAt <= mark;
    }

    const ItemCatalogue& m_catalogue;
    Semaphore m_semaphore{1, 1};
    std::unordered_map<std::string, Entry> m_entries;
    Mark m_changes = 0;
    Mark m_invalidatedAt = 0;
};

}  // namespace vireo
