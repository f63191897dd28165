#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Visibility.h"
#include "data/RootIdList.h"

namespace vireo {

class LocalMgmtIfc;
class ManageableData;
class MgmtAgentIfc;

/// Names that stand for lists of items. Filled at start-up by one thread, read by all afterwards.
class VIREO_API DataCollection {
public:
    /// `service` answers for the items; not owned, outlives this.
    explicit DataCollection(LocalMgmtIfc* service);

    /// Appends `rootId` to the collection, creating it; a member that is there already stays once.
    void add(const std::string& collectionId, const std::string& rootId);
    /// Says that there is an item of that name as well. As a member it stands for itself.
    void addItem(const std::string& rootId) { m_items.insert(rootId); }
    /// The names of all collections.
    std::vector<std::string> names() const;
    /// Whether `collectionId` is no collection, or one without members.
    bool empty(const std::string& collectionId) const;
    /// The items that the collection stands for, each once, in the order of its members. A member
    /// that is a collection and no item stands for its own members, also where collections are
    /// members of each other or of themselves.
    std::vector<std::string> items(const std::string& collectionId) const;

    /// Reads every item of the one collection that `record` lists. What `record` holds of them is
    /// sent along; what was read stands in it afterwards beside its root id. False when an item
    /// could not be read.
    bool getData(ManageableData& record) const;
    /// Writes those items of the one collection that `record` lists for which it holds a document.
    /// False when one was not accepted; `record` carries the refusals. A record without any such
    /// document, or with one for the collection itself, is refused and nothing is written.
    bool setData(ManageableData& record) const;

    /// Lets `agent` observe every member, also those of collections that are members. 1 when every
    /// one is observed now and there are any, else 0.
    int observe(const std::string& collectionId, MgmtAgentIfc* agent, bool bulk) const;

private:
    template <class IsLeaf>
    std::vector<std::string> expand(const std::string& collectionId, IsLeaf&& isLeaf) const;

    LocalMgmtIfc* m_service;
    std::unordered_map<std::string, RootIdList> m_members;
    std::unordered_set<std::string> m_items;
};

}  // namespace vireo
