#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "Visibility.h"
#include "data/RootIdList.h"

namespace vireo {

class LocalMgmtIfc;

/// Names that stand for lists of items. Filled at start-up by one thread, read by all afterwards.
class VIREO_API DataCollection {
public:
    /// `service` answers for the members; not owned, outlives this.
    explicit DataCollection(LocalMgmtIfc* service);

    /// Appends `rootId` to the collection, creating it; a member that is there already stays once.
    void add(const std::string& collectionId, const std::string& rootId);
    /// Whether `collectionId` is no collection, or one without members.
    bool empty(const std::string& collectionId) const;
    /// The members in the order in which they were added.
    std::vector<std::string> members(const std::string& collectionId) const;

private:
    std::unordered_map<std::string, RootIdList> m_members;
};

}  // namespace vireo
