#include "check/CollectionCheck.h"

#include <algorithm>

namespace vireo {
namespace {

constexpr const char* kCollections = "VcmsDataCollection";
constexpr const char* kColumns[] = {"collectionId", "collectionDataList"};

}  // namespace

std::size_t CollectionCheck::run() {
    readCollections();
    for (auto& [id, collection] : m_collections) {
        readMembers(collection);
        checkMembers(id, collection);
    }
    for (const auto& [id, collection] : m_collections) {
        std::vector<std::string> path;
        follow(id, path);
    }
    return m_collections.size();
}

void CollectionCheck::readCollections() {
    const DocumentFindings findings = m_rows.of(kCollections);
    m_rows.forEachIfThere(kCollections, {"collection", kColumns, 2}, [&](const RowTexts& row) {
        if (!m_collections.try_emplace(*row[0], Collection{*row[1], {}}).second) {
            findings.error({"collection \"", *row[0], "\" is there twice"},
                           "put all members into one list");
        } else if (m_items.contains(*row[0])) {
            findings.error({"\"", *row[0],
                            "\" is an item as well, so nobody reaches the "
                            "collection"},
                           "give the collection another name");
        }
    });
}

void CollectionCheck::readMembers(Collection& collection) const {
    const auto list = m_documents.getDocument(collection.list);
    if (!list) {
        m_rows.of(kCollections)
            .error({"there is no document \"", collection.list, "\""},
                   "correct the name, or import the file that has the document");
        return;
    }
    list->root()->forEachChild(
        "rootId", [&](const DxlNode& member) { collection.members.push_back(member.value()); });
    if (collection.members.empty()) {
        m_rows.of(collection.list)
            .error({"the list has no members, so there is no such collection"},
                   "add a <rootId> for each member, or take the collection out");
    }
}

void CollectionCheck::checkMembers(const std::string& id, const Collection& collection) const {
    std::set<std::string> seen;
    for (const std::string& member : collection.members) {
        if (!seen.insert(member).second) {
            m_rows.of(collection.list)
                .warning({"\"", member, "\" is a member twice"}, "take one of them out");
        } else if (!m_items.contains(member) && !m_collections.contains(member)) {
            m_rows.of(collection.list)
                .error({"member \"", member, "\" of collection \"", id,
                        "\" is neither an item nor a collection"},
                       "correct the name, or take it out");
        }
    }
}

void CollectionCheck::follow(const std::string& id, std::vector<std::string>& path) {
    const auto collection = m_collections.find(id);
    if (collection == m_collections.end() || m_items.contains(id)) {
        return;
    }
    const bool isOnPath = std::find(path.begin(), path.end(), id) != path.end();
    path.push_back(id);
    if (isOnPath) {
        std::string way;
        for (auto step = std::find(path.begin(), path.end(), id); step != path.end(); ++step) {
            way.append(way.empty() ? "" : " > ").append(*step);
        }
        m_rows.of(collection->second.list)
            .error({"collection \"", id, "\" contains itself: ", way}, "take one of the steps out");
    } else if (m_followed.insert(id).second) {
        for (const std::string& member : collection->second.members) {
            follow(member, path);
        }
    }
    path.pop_back();
}

}  // namespace vireo
