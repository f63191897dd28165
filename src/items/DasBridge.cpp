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

void appendElement(std::string& out, const std::string& name, const std::string& text) {
    // The store takes everything literally: nothing is escaped here.
    out.append(1, '<').append(name).append(1, '>').append(text);
    out.append("</").append(name).append(1, '>');
}

std::string readRequest(const StoreAddress& address, const std::string& indexColumn,
                        const std::string& indexValue) {
    std::string request(kHead);
    request.append(address.table)
        .append(R"("><ReasonForMessage>read_request</ReasonForMessage><ResultCols>)")
        .append(address.column)
        .append("</ResultCols>");
    if (!indexColumn.empty()) {
        request.append("<Entry>");
        appendElement(request, indexColumn, indexValue);
        request.append("</Entry>");
    }
    return request.append("</Schema>");
}

std::string updateRequest(const StoreAddress& address, const std::string& indexColumn,
                          const std::string& indexValue, const std::string& value) {
    std::string request(kHead);
    request.reserve(value.size() + 256);
    request.append(address.table)
        .append(R"("><ReasonForMessage>update_request</ReasonForMessage>)");
    if (!indexColumn.empty()) {
        request.append("<Entry>");
        appendElement(request, indexColumn, indexValue);
    }
    appendElement(request, address.column, value);
    if (!indexColumn.empty()) {
        request.append("</Entry>");
    }
    return request.append("</Schema>");
}

bool parseAnswer(DasResponseParser& parser, const std::string& answer, const char* reason) {
    std::string found;
    if (parser.parseXmlResponse(answer) && parser.getItemValue("ReasonForMessage", found) &&
        found == reason) {
        return true;
    }
    std::string error;
    if (parser.getItemValue("Error", error)) {
        // The store has said what is wrong with it, once; requests come by the thousand.
        VCMS_LOG(kLogDebug, "VCMS - no %s from the persistent store: %s", reason, error.c_str());
    } else {
        VCMS_LOG(kLogError, "VCMS - no %s from the persistent store", reason);
    }
    return false;
}

}  // namespace

DasBridge::DasBridge(ItemCatalogue& catalogue, StoreSource store)
    : m_catalogue(catalogue), m_store(std::move(store)) {}

bool DasBridge::getDasData(ManageableData& record) {
    const std::string rootId = record.getRootId();
    VCMS_LOG(kLogDebug, "VCMS getDasData - Called (rootId = %s)", rootId.c_str());
    const std::vector<std::string>& nodes = m_catalogue.storedNodes(rootId);
    if (nodes.empty()) {
        return readUnmapped(rootId, record);
    }
    bool result = true;
    for (const std::string& node : nodes) {
        result = readNode({rootId, node}, record) && result;
    }
    return result;
}

bool DasBridge::readUnmapped(const std::string& rootId, ManageableData& record) {
    auto document = m_catalogue.cachedOrDefault(rootId, m_catalogue.findSchemaName(rootId));
    if (!document) {
        return false;
    }
    record.putDocument(std::move(document));
    return true;
}

bool DasBridge::findIndexValue(const NodeId& node, const StoreAddress& address,
                               const std::string& indexColumn, std::string& indexValue) const {
    const StoreAddress* wholeItem = m_catalogue.storeAddress({node.rootId, node.rootId});
    if (address.indexValue) {
        indexValue = *address.indexValue;
    } else if (wholeItem != nullptr && wholeItem->indexValue) {
        indexValue = *wholeItem->indexValue;
    } else if (!indexColumn.empty()) {
        VCMS_LOG(kLogError, "VCMS - no index value for %s, node %s, in table %s",
                 node.rootId.c_str(), node.nodeId.c_str(), address.table.c_str());
        return false;
    }
    return true;
}

bool DasBridge::readNode(const NodeId& node, ManageableData& record) {
    const StoreAddress& address = *m_catalogue.storeAddress(node);
    const std::string& indexColumn = m_catalogue.indexColumn(address.table);
    std::string indexValue;
    if (!findIndexValue(node, address, indexColumn, indexValue)) {
        return false;
    }
    VCMS_LOG(kLogDebug, "VCMS getDasData (schema=%s, item=%s, indexName=%s, indxValue=%s)",
             address.table.c_str(), address.column.c_str(), indexColumn.c_str(),
             indexValue.c_str());
    std::string answer;
    DasResponseParser parser;
    if (!send(readRequest(address, indexColumn, indexValue), answer) ||
        !parseAnswer(parser, answer, "read_response")) {
        return false;
    }
    std::string value;
    if (!parser.getItemValue(address.column, value)) {
        value = address.defaultValue.value_or(std::string());
    }
    if (!record.getDocument(node.rootId)) {
        record.makeDocument(m_catalogue.findSchemaName(node.rootId), node.rootId);
    }
    const bool populated = record.populate(node.rootId, node.nodeId, value);
    VCMS_LOG(kLogDebug, "VCMS getDasData (item val = %s)", value.c_str());
    return populated;
}

bool DasBridge::setDasData(const ManageableData& record) {
    const std::string rootId = record.getRootId();
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
            result = writeNode({rootId, node}, value) && result;
        }
    }
    return result;
}

bool DasBridge::writeNode(const NodeId& node, const std::string& value) {
    const StoreAddress& address = *m_catalogue.storeAddress(node);
    const std::string& indexColumn = m_catalogue.indexColumn(address.table);
    std::string indexValue;
    if (!findIndexValue(node, address, indexColumn, indexValue)) {
        return false;
    }
    VCMS_LOG(kLogDebug, "VCMS setDasData (schema=%s, item=%s, indexName=%s, indxValue=%s)",
             address.table.c_str(), address.column.c_str(), indexColumn.c_str(),
             indexValue.c_str());
    std::string answer;
    DasResponseParser parser;
    return send(updateRequest(address, indexColumn, indexValue, value), answer) &&
           parseAnswer(parser, answer, "update_response");
}

bool DasBridge::send(const std::string& request, std::string& answer) {
    DataAccessServiceIfc* store = m_store();
    if (store == nullptr) {
        VCMS_LOG(kLogError, "VCMS - no persistent store");
        return false;
    }
    return guarded("persistent store", false, [&] {
        answer = store->request(request);
        return true;
    });
}

bool StoreUpdate::write(const ManageableData& record) {
    if (m_open == nullptr && !m_bridge.m_catalogue.storedNodes(record.getRootId()).empty()) {
        m_open = m_bridge.m_store();
        if (m_open != nullptr) {
            m_open->beginUpdate();
        }
    }
    return m_bridge.setDasData(record);
}

bool StoreUpdate::commit() {
    DataAccessServiceIfc* open = std::exchange(m_open, nullptr);
    return open == nullptr || open->commitUpdate();
}

}  // namespace vireo
