#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "check/DocumentRows.h"
#include "check/KnownItems.h"

namespace vireo {

/// Checks the names that stand for several items.
class CollectionCheck {
public:
    /// Not owned; all outlive this.
    CollectionCheck(const DxlCollection& documents, const KnownItems& items,
                    const DocumentRows& rows)
        : m_documents(documents), m_items(items), m_rows(rows) {}

    /// Reports, and answers how many collections there are.
    std::size_t run();

private:
    struct Collection {
        std::string list;  ///< the document that has its members
        std::vector<std::string> members;
    };

    void readCollections();
    void readMembers(Collection& collection) const;
    void checkMembers(const std::string& id, const Collection& collection) const;
    void follow(const std::string& id, std::vector<std::string>& path);

    const DxlCollection& m_documents;
    const KnownItems& m_items;
    const DocumentRows& m_rows;
    std::map<std::string, Collection> m_collections;
    std::set<std::string> m_followed;
};

}  // namespace vireo
