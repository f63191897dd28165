#include "data/RootIdList.h"

#include <algorithm>
#include <utility>

namespace vireo {
namespace {

// Up to here looking along the list is faster than hashing.
constexpr std::size_t kShortList = 8;

}  // namespace

bool RootIdList::contains(const std::string& rootId) const {
    if (m_ids.size() <= kShortList) {
        return std::find(m_ids.begin(), m_ids.end(), rootId) != m_ids.end();
    }
    return m_known.contains(rootId);
}

bool RootIdList::add(const std::string& rootId) {
    if (contains(rootId)) {
        return false;
    }
    m_ids.push_back(rootId);
    if (m_ids.size() == kShortList + 1) {
        m_known.insert(m_ids.begin(), m_ids.end());
    } else if (m_ids.size() > kShortList) {
        m_known.insert(rootId);
    }
    return true;
}

bool RootIdList::remove(const std::string& rootId) {
    const auto found = std::find(m_ids.begin(), m_ids.end(), rootId);
    if (found == m_ids.end()) {
        return false;
    }
    m_ids.erase(found);
    if (m_ids.size() <= kShortList) {
        m_known.clear();
    } else {
        m_known.erase(rootId);
    }
    return true;
}

void RootIdList::removeAll(const std::unordered_set<std::string>& rootIds) {
    std::vector<std::string> kept;
    for (std::string& rootId : m_ids) {
        if (!rootIds.contains(rootId)) {
            kept.push_back(std::move(rootId));
        }
    }
    clear();
    for (const std::string& rootId : kept) {
        add(rootId);
    }
}

void RootIdList::clear() {
    m_ids.clear();
    m_known.clear();
}

}  // namespace vireo
