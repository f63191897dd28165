#include "data/DataCollection.h"

#include <unordered_set>

#include "LocalMgmtIfc.h"
#include "data/ManageableData.h"

namespace vireo {
namespace {

/// Puts the item's document and schema into `target`; false when `source` has no document.
bool copyItem(const ManageableData& source, ManageableData& target, const std::string& rootId) {
    const DxlDocumentPointer document = source.getDocument(rootId);
    if (!document) {
        return false;
    }
    if (!target.getSchema(document->schemaName())) {
        target.copySchema(document->schemaName(), source);
    }
    target.putDocument(document);
    return true;
}

/// Brings what the service made of the items back to the record that asked for the collection.
void takeAnswer(const ManageableData& answer, const std::vector<std::string>& items,
                ManageableData& record) {
    for (const std::string& rootId : items) {
        copyItem(answer, record, rootId);
    }
    record.addRejectReasons(answer.rejections());
}

}  // namespace

DataCollection::DataCollection(LocalMgmtIfc* service) : m_service(service) {}

void DataCollection::add(const std::string& collectionId, const std::string& rootId) {
    m_members[collectionId].add(rootId);
}

bool DataCollection::empty(const std::string& collectionId) const {
    const auto found = m_members.find(collectionId);
    return found == m_members.end() || found->second.ids().empty();
}

std::vector<std::string> DataCollection::names() const {
    std::vector<std::string> names;
    names.reserve(m_members.size());
    for (const auto& [name, members] : m_members) {
        names.push_back(name);
    }
    return names;
}

template <class IsLeaf>
std::vector<std::string> DataCollection::expand(const std::string& collectionId,
                                                IsLeaf&& isLeaf) const {
    RootIdList items;
    std::unordered_set<std::string> followed;
    std::vector<std::string> waiting{collectionId};  // the next one is the last
    while (!waiting.empty()) {
        const std::string next = std::move(waiting.back());
        waiting.pop_back();
        const auto found = m_members.find(next);
        if (found == m_members.end() || (next != collectionId && isLeaf(next))) {
            items.add(next);
        } else if (followed.insert(next).second) {
            const std::vector<std::string>& members = found->second.ids();
            waiting.insert(waiting.end(), members.rbegin(), members.rend());
        }
    }
    return items.ids();
}

std::vector<std::string> DataCollection::items(const std::string& collectionId) const {
    return expand(collectionId,
                  [this](const std::string& member) { return m_items.contains(member); });
}

int DataCollection::observe(const std::string& collectionId, MgmtAgentIfc* agent, bool bulk) const {
    // For observers the name of a collection always means the collection.
    const auto members = expand(collectionId, [](const std::string&) { return false; });
    int result = members.empty() ? 0 : 1;
    for (const std::string& rootId : members) {
        result = m_service->observeManageableData(rootId, agent, bulk) == 1 ? result : 0;
    }
    return result;
}

bool DataCollection::getData(ManageableData& record) const {
    const std::vector<std::string> wanted = items(record.getRootId());
    ManageableData request;
    for (const std::string& rootId : wanted) {
        copyItem(record, request, rootId);
        request.addRootId(rootId, nullptr);
    }
    const bool result = m_service->getData(request);
    takeAnswer(request, wanted, record);
    return result;
}

bool DataCollection::setData(ManageableData& record) const {
    const std::string collectionId = record.getRootId();
    if (record.getDocument(collectionId)) {
        record.addRejectReason(collectionId, "//*", RejectReasonsStrings::invalid_data);
        return false;
    }
    ManageableData request;
    for (const std::string& rootId : items(collectionId)) {
        if (copyItem(record, request, rootId)) {
            request.addRootId(rootId, nullptr);
        }
    }
    const std::vector<std::string> written = request.rootIds();
    if (written.empty()) {
        record.addRejectReason(collectionId, "//*", RejectReasonsStrings::tags_missing);
        return false;
    }
    const bool result = m_service->setData(request);
    takeAnswer(request, written, record);
    return result;
}

}  // namespace vireo
