#include "data/DataCollection.h"

namespace vireo {

DataCollection::DataCollection(LocalMgmtIfc* /*service*/) {}

void DataCollection::add(const std::string& collectionId, const std::string& rootId) {
    m_members[collectionId].add(rootId);
}

bool DataCollection::empty(const std::string& collectionId) const {
    const auto found = m_members.find(collectionId);
    return found == m_members.end() || found->second.ids().empty();
}

std::vector<std::string> DataCollection::members(const std::string& collectionId) const {
    const auto found = m_members.find(collectionId);
    return found == m_members.end() ? std::vector<std::string>{} : found->second.ids();
}

}  // namespace vireo
