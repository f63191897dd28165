#include "items/ValueCache.h"

#include "SemaphoreGuard.h"
#include "data/ManageableData.h"
#include "items/ItemCatalogue.h"

namespace vireo {

ValueCache::ValueCache(const ItemCatalogue& catalogue) : m_catalogue(catalogue) {}

bool ValueCache::fetch(const std::string& tag, std::string& value) {
    const SemaphoreGuard guard(m_semaphore);
    const auto found = m_entries.find(tag);
    if (found == m_entries.end()) {
        return false;
    }
    const std::optional<std::string>& known = found->second.value;
    if (!known) {
        return false;
    }
    value = *known;
    return true;
}

void ValueCache::update(const std::string& tag, const std::string& value) {
    if (!m_catalogue.isNeverCached(tag)) {
        const SemaphoreGuard guard(m_semaphore);
        m_entries.insert_or_assign(tag, Entry{value, ++m_changes});
    }
}

void ValueCache::update(const ManageableData& record) {
    std::string value;
    for (const std::string& rootId : record.rootIds()) {
        if (record.interogate(rootId, rootId, value)) {
            update(rootId, value);
        }
    }
}

void ValueCache::invalidate() {
    const SemaphoreGuard guard(m_semaphore);
    m_invalidatedAt = ++m_changes;
    m_entries.clear();
}

ValueCache::Mark ValueCache::mark() {
    const SemaphoreGuard guard(m_semaphore);
    return m_changes;
}

void ValueCache::fill(Mark mark, const std::string& tag, const std::string& value) {
    if (!m_catalogue.isCacheable(tag)) {
        return;
    }
    const SemaphoreGuard guard(m_semaphore);
    Entry& entry = m_entries[tag];
    if (isUnchanged(mark, entry)) {
        entry.value = value;
    }
}

bool ValueCache::takes(const std::string& tag) const {
    return m_catalogue.isCacheable(tag);
}

void ValueCache::correct(Mark mark, const std::string& tag,
                         const std::optional<std::string>& value) {
    if (!m_catalogue.isCacheable(tag)) {
        return;
    }
    const SemaphoreGuard guard(m_semaphore);
    Entry& entry = m_entries[tag];
    entry.value = isUnchanged(mark, entry) ? value : std::nullopt;
    entry.changedAt = ++m_changes;
}

}  // namespace vireo
