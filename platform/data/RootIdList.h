#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "Visibility.h"

namespace vireo {

/// Item names in the order in which they were added, each once. Adding does not scan long lists.
class VIREO_API RootIdList {
public:
    /// False when it is there already.
    bool add(const std::string& rootId);
    bool remove(const std::string& rootId);
    /// Takes every one of `rootIds` out, in one pass.
    void removeAll(const std::unordered_set<std::string>& rootIds);
    bool contains(const std::string& rootId) const;
    void clear();
    const std::vector<std::string>& ids() const { return m_ids; }

private:
    std::vector<std::string> m_ids;
    std::unordered_set<std::string> m_known;  // only used when the list is long
};

}  // namespace vireo
