#include "items/DasBridge.h"

#include <utility>

#include "Boundary.h"
#include "data/ManageableData.h"
#include "items/DasResponseParser.h"
#include "items/ItemCatalogue.h"
#include "services/DataAccessServiceIfc.h"

namespace vireo {
namespace {

constexpr const char* kHead = R"(<?xml version="1.0" encoding="utf-8"?><Schema name=")";

// Room for the fixed parts of a request and its names.
constexpr std::size_t kRequestRoom = 320;

void appendElement(std::string& out, const std::string& name, const std::string& text) {
    // The store takes everything literally: nothing is escaped here.
    out.append(1, '<').append(name).append(1, '>').append(text);
    out.append("</").append(name).append(1, '>');
}

}  // namespace

/// Where the store keeps a node. Refers to the catalogue.
struct DasBridge::Place {
    const StoreAddress* address = nullptr;
    const std::string* indexColumn = nullptr;  ///< empty for a table without index
    const std::string* indexValue = nullptr;   ///< null when there is none

    bool isKeyed() const { return indexValue != nullptr && !indexColumn->empty(); }
    const char* indexText() const { return indexValue != nullptr ? indexValue->c_str() : ""; }
    std::string readRequest() const;
    std::string updateRequest(const std::string& value) const;
};

std::string DasBridge::Place::readRequest() const {
    std::string request;
    request.reserve(kRequestRoom);
    request.append(kHead)
        .append(address->table)
        .append(R"("><ReasonForMessage>read_request</ReasonForMessage><ResultCols>)")
        .append(address->column)
        .append("</ResultCols>");
    if (isKeyed()) {
        request.append("<Entry>");
        appendElement(request, *indexColumn, *indexValue);
        request.append("</Entry>");
    }
    request.append("</Schema>");
    return request;
}

std::string DasBridge::Place::updateRequest(const std::string& value) const {
    std::string request;
    request.reserve(value.size() + kRequestRoom);
    request.append(kHead)
        .append(address->table)
        .append(R"("><ReasonForMessage>update_request</ReasonForMessage>)");
    if (isKeyed()) {
        request.append("<Entry>");
        appendElement(request, *indexColumn, *indexValue);
    }
    appendElement(request, address->column, value);
    if (isKeyed()) {
        request.append("</Entry>");
    }
    request.append("</Schema>");
    return request;
}

DasBridge::DasBridge(ItemCatalogue& catalogue, StoreSource store)
    : m_catalogue(catalogue), m_store(std::move(store)) {}

bool DasBridge::getDasData(const std::string& rootId, const std::string& schemaName,
                           ManageableData& record) {
    VCMS_LOG(kLogDebug, "VCMS getDasData - Called (rootId = %s)", rootId.c_str());
    const std::vector<std::string>& nodes = m_catalogue.storedNodes(rootId);
    if (nodes.empty()) {
        return readUnmapped(rootId, schemaName, record);
    }
    bool result = true;
    for (const std::string& node : nodes) {
        result = readNode(rootId, schemaName, node, record) && result;
    }
    return result;
}

bool DasBridge::readUnmapped(const std::string& rootId, const std::string& schemaName,
                             ManageableData& record) {
    auto document = m_catalogue.cachedOrDefault(rootId, schemaName);
    if (!document) {
        return false;
    }
    record.putDocument(std::move(document));
    return true;
}

bool DasBridge::findPlace(const std::string& rootId, const std::string& nodeId,
                          Place& place) const {
    place.address = m_catalogue.storeAddress({rootId, nodeId});
    place.indexColumn = &m_catalogue.indexColumn(place.address->table);
    const StoreAddress* keyed = place.address;
    if (!keyed->indexValue) {
        keyed = m_catalogue.storeAddress({rootId, rootId});
    }
    if (keyed != nullptr && keyed->indexValue) {
        place.indexValue = &*keyed->indexValue;
    } else if (!place.indexColumn->empty()) {
        VCMS_LOG(kLogError, "VCMS - no index value for %s, node %s, in table %s", rootId.c_str(),
                 nodeId.c_str(), place.address->table.c_str());
        return false;
    }
    return true;
}

bool DasBridge::readNode(const std::string& rootId, const std::string& schemaName,
                         const std::string& nodeId, ManageableData& record) {
    Place place;
    if (!findPlace(rootId, nodeId, place)) {
        return false;
    }
    const StoreAddress& address = *place.address;
    VCMS_LOG(kLogDebug, "VCMS getDasData (schema=%s, item=%s, indexName=%s, indxValue=%s)",
             address.table.c_str(), address.column.c_str(), place.indexColumn->c_str(),
             place.indexText());
    DasResponseParser answer;
    if (!ask(place.readRequest(), "read_response", answer)) {
        return false;
    }
    const auto found = answer.findItemValue(address.column);
    std::string value = found ? std::string(*found) : address.defaultValue.value_or(std::string());
    VCMS_LOG(kLogDebug, "VCMS getDasData (item val = %s)", value.c_str());
    if (!record.getDocument(rootId)) {
        // Nearly every item is one leaf.
        const bool isRoot = nodeId == rootId || nodeId == schemaName;
        if (isRoot && record.makeLeaf(schemaName, rootId, std::move(value))) {
            return true;
        }
        record.makeDocument(schemaName, rootId);
    }
    // NOLINTNEXTLINE(bugprone-use-after-move): the value is only taken where a leaf is made
    return record.populate(rootId, nodeId, value);
}

bool DasBridge::setDasData(const std::string& rootId, const ManageableData& record) {
    const DxlDocumentPointer document = record.getDocument(rootId);
    if (!document) {
        return false;
    }
    const std::vector<std::string>& nodes = m_catalogue.storedNodes(rootId);
    if (nodes.empty()) {
        VCMS_LOG(kLogDebug, "VCMS setDasData - not persistent data");
        m_catalogue.keepItem(record, rootId);
        return true;
    }
    const bool isLeaf = document->root()->children().empty();
    bool result = true;
    for (const std::string& node : nodes) {
        std::string value;
        // What the record does not carry is left alone in the store.
        if (record.interogate(rootId, isLeaf ? rootId : node, value)) {
            result = writeNode(rootId, node, value) && result;
        }
    }
    return result;
}

bool DasBridge::writeNode(const std::string& rootId, const std::string& nodeId,
                          const std::string& value) {
    Place place;
    if (!findPlace(rootId, nodeId, place)) {
        return false;
    }
    VCMS_LOG(kLogDebug, "VCMS setDasData (schema=%s, item=%s, indexName=%s, indxValue=%s)",
             place.address->table.c_str(), place.address->column.c_str(),
             place.indexColumn->c_str(), place.indexText());
    DasResponseParser answer;
    return ask(place.updateRequest(value), "update_response", answer);
}

/// Sends a request. False, and a line in the log, when the answer has another reason.
bool DasBridge::ask(const std::string& request, const char* reason, DasResponseParser& answer) {
    DataAccessServiceIfc* store = m_store();
    if (store == nullptr) {
        VCMS_LOG(kLogError, "VCMS - no persistent store");
        return false;
    }
    std::string text;
    const bool isAnswered = guarded("persistent store", false, [&] {
        text = store->request(request);
        return true;
    });
    if (!isAnswered) {
        return false;
    }
    if (answer.parseXmlResponse(std::move(text)) &&
        answer.findItemValue("ReasonForMessage") == reason) {
        return true;
    }
    std::string error;
    if (answer.getItemValue("Error", error)) {
        // The store has said what is wrong with it, once; requests come by the thousand.
        VCMS_LOG(kLogDebug, "VCMS - no %s from the persistent store: %s", reason, error.c_str());
    } else {
        VCMS_LOG(kLogError, "VCMS - no %s from the persistent store", reason);
    }
    return false;
}

bool StoreUpdate::write(const std::string& rootId, const ManageableData& record) {
    if (m_open == nullptr && !m_bridge.m_catalogue.storedNodes(rootId).empty()) {
        m_open = m_bridge.m_store();
        if (m_open != nullptr) {
            m_open->beginUpdate();
        }
    }
    return m_bridge.setDasData(rootId, record);
}

bool StoreUpdate::commit() {
    DataAccessServiceIfc* open = std::exchange(m_open, nullptr);
    return open == nullptr || open->commitUpdate();
}

}  // namespace vireo
