#include "data/ManageableData.h"

#include <utility>

#include "data/NodeWriter.h"
#include "data/RecordText.h"
#include "data/XmlText.h"
#include "log/Log.h"

namespace vireo {

ManageableData::ManageableData() : ManageableData(nullptr) {}

ManageableData::ManageableData(DxlDictionary* dictionary) : m_dictionary(dictionary) {}

ManageableData::ManageableData(const std::string& rootId, const std::string& schemaName,
                               const DataNode& node)
    : ManageableData(nullptr) {
    if (node && XmlText::isName(schemaName)) {
        putDocument(std::make_shared<const DxlDocument>(
            rootId, std::make_shared<const DxlNode>(*node, schemaName)));
        setRootId(rootId, nullptr);
    }
}

void ManageableData::addRootId(const std::string& rootId, LocalMgmtIfc* /*requester*/) {
    if (m_rootIds.add(rootId)) {
        m_single = false;
        m_text.reset();
    }
}

void ManageableData::addRootId(const std::string& rootId, const std::string& companion) {
    addRootId(rootId, nullptr);
    m_text.reset();
    m_companions.insert_or_assign(rootId, companion);
}

void ManageableData::setRootId(const std::string& rootId, LocalMgmtIfc* /*requester*/) {
    RootIdList only;
    only.add(rootId);  // first: the caller's text may be in the list that goes
    m_rootIds = std::move(only);
    m_single = true;
    m_text.reset();
}

void ManageableData::removeRootId(const std::string& rootId) {
    const auto removed = std::string(rootId);  // the caller's text may go with the item
    m_text.reset();
    m_documents.erase(removed);
    if (m_rootIds.remove(removed)) {
        m_single = false;
    }
    m_companions.erase(removed);
}

void ManageableData::removeRootIds(const std::unordered_set<std::string>& rootIds) {
    m_text.reset();
    const std::size_t before = m_rootIds.ids().size();
    m_rootIds.removeAll(rootIds);
    m_single = m_single && m_rootIds.ids().size() == before;
    for (const std::string& rootId : rootIds) {
        m_documents.erase(rootId);
        m_companions.erase(rootId);
    }
}

void ManageableData::getRootIds(std::vector<std::string>& rootIds) const {
    rootIds = m_rootIds.ids();
}

std::string ManageableData::getRootId() const {
    return m_rootIds.ids().size() == 1 ? m_rootIds.ids().front() : std::string();
}

std::optional<std::string> ManageableData::companion(const std::string& rootId) const {
    const auto found = m_companions.find(rootId);
    return found == m_companions.end() ? std::nullopt : std::optional(found->second);
}

DataNode ManageableData::interogate(const std::string& rootId) const {
    const DxlDocumentPointer document = m_documents.find(rootId);
    if (!document) {
        return {};
    }
    return {document->root(), NodeWriter::find(*document->root(), rootId, rootId)};
}

bool ManageableData::interogate(const std::string& rootId, const std::string& nodeId,
                                std::string& value) const {
    const DxlDocumentPointer document = m_documents.find(rootId);
    const DxlNode* node = document ? NodeWriter::find(*document->root(), rootId, nodeId) : nullptr;
    if (node == nullptr) {
        return false;
    }
    value = node->value();
    return true;
}

bool ManageableData::populate(const std::string& rootId, const std::string& nodeId,
                              const std::string& value) {
    if (!XmlText::isName(rootId) || !XmlText::isName(nodeId) || XmlText::findUncarriable(value) ||
        !writeNode(rootId, nodeId, value)) {
        return false;
    }
    addRootId(rootId, nullptr);
    return true;
}

bool ManageableData::populate(const std::string& rootId, const std::string& value) {
    return populate(rootId, rootId, value);
}

bool ManageableData::populate(const std::string& rootId, const DataNode& node) {
    if (!node || !XmlText::isName(rootId)) {
        return false;
    }
    const DxlDocumentPointer old = m_documents.find(rootId);
    putDocument(std::make_shared<const DxlDocument>(
        rootId, old ? std::make_shared<const DxlNode>(*node, old->schemaName()) : node.pointer()));
    addRootId(rootId, nullptr);
    return true;
}

bool ManageableData::writeNode(const std::string& rootId, const std::string& nodeId,
                               const std::string& value) {
    const DxlDocumentPointer document = m_documents.find(rootId);
    const auto schema = getSchema(document ? document->schemaName() : rootId);
    DxlNode::Pointer root;
    if (document) {
        root = document->root();
    } else if (schema) {
        root = schema->root();
    } else {
        root = std::make_shared<const DxlNode>(rootId, DxlNode::Kind::eLeaf);
    }
    root = NodeWriter::write(root, schema.get(), rootId, nodeId, value);
    if (!root) {
        return false;
    }
    putDocument(std::make_shared<const DxlDocument>(rootId, std::move(root)));
    return true;
}

bool ManageableData::makeDocument(const std::string& schemaName, const std::string& rootId) {
    const auto schema = getSchema(schemaName);
    if (!schema) {
        return false;
    }
    putDocument(std::make_shared<const DxlDocument>(rootId, schema->root()));
    return true;
}

bool ManageableData::makeLeaf(const std::string& schemaName, const std::string& rootId,
                              std::string&& value) {
    const auto schema = getSchema(schemaName);
    if (!schema || schema->root()->kind() != DxlNode::Kind::eLeaf || !XmlText::isName(rootId) ||
        XmlText::findUncarriable(value)) {
        return false;
    }
    putDocument(std::make_shared<const DxlDocument>(
        rootId,
        std::make_shared<const DxlNode>(schemaName, DxlNode::Kind::eLeaf, std::move(value))));
    addRootId(rootId, nullptr);
    return true;
}

DxlDocumentPointer ManageableData::getDocument(const std::string& rootId) const {
    return m_documents.find(rootId);
}

std::vector<DxlDocumentPointer> ManageableData::documents() const {
    return m_documents.sorted();
}

std::shared_ptr<const DxlSchema> ManageableData::getSchema(const std::string& name) const {
    auto schema = m_schemas.find(name);
    return schema || m_dictionary == nullptr ? schema : m_dictionary->findSchema(name);
}

void ManageableData::putDocument(DxlDocumentPointer document) {
    m_text.reset();
    m_documents.put(std::move(document));
}

void ManageableData::putSchema(std::shared_ptr<const DxlSchema> schema) {
    m_text.reset();
    m_schemas.put(std::move(schema));
}

bool ManageableData::copyDocument(const std::string& rootId, const DxlCollection& source) {
    auto document = source.getDocument(rootId);
    if (!document) {
        return false;
    }
    putDocument(std::move(document));
    return true;
}

bool ManageableData::copyDocument(const std::string& rootId, const ManageableData& source) {
    auto document = source.getDocument(rootId);
    if (!document) {
        return false;
    }
    putDocument(std::move(document));
    return true;
}

bool ManageableData::copySchema(const std::string& name, const DxlCollection& source) {
    auto schema = source.getSchema(name);
    if (!schema) {
        return false;
    }
    putSchema(std::move(schema));
    return true;
}

bool ManageableData::copySchema(const std::string& name, const ManageableData& source) {
    auto schema = source.getSchema(name);
    if (!schema) {
        return false;
    }
    putSchema(std::move(schema));
    return true;
}

void ManageableData::addRejectReason(std::string rootId, std::string nodePath, std::string reason) {
    m_text.reset();
    m_rejections.emplace_back(std::move(rootId), std::move(nodePath), std::move(reason));
}

void ManageableData::addRejectReasons(const std::vector<RejectionSpec>& reasons) {
    m_text.reset();
    m_rejections.insert(m_rejections.end(), reasons.begin(), reasons.end());
}

void ManageableData::clearRejectReasons() {
    m_text.reset();
    m_rejections.clear();
}

std::string ManageableData::serialize(serializationType type) const {
    return m_text && type == eEverything ? *m_text : RecordText::write(*this, type);
}

void ManageableData::appendText(std::string& out) const {
    if (m_text) {
        out.append(*m_text);
    } else {
        RecordText::append(out, *this, eEverything);
    }
}

void ManageableData::keepText() {
    if (!m_text) {
        m_text = std::make_shared<const std::string>(RecordText::write(*this, eEverything));
    }
}

bool ManageableData::deserialize(const std::string& text) {
    ManageableData parsed;
    std::string error;
    if (!RecordText::read(text, parsed, error)) {
        if (loggingOnUni(kLogWarning)) {
            logAppUni("ManageableData", "./host/data/ManageableData", kLogWarning, __LINE__,
                      "malformed record: %s", error.c_str());
        }
        return false;
    }
    overlay(std::move(parsed));
    return true;
}

bool ManageableData::isBlank() const {
    return m_rootIds.ids().empty() && m_documents.values().empty() && m_schemas.values().empty() &&
           m_rejections.empty() && m_companions.empty();
}

void ManageableData::overlay(const ManageableData& other) {
    m_text.reset();
    const bool wasEmpty = m_rootIds.ids().empty();
    for (const auto& schema : other.m_schemas.values()) {
        putSchema(schema);
    }
    for (const auto& document : other.m_documents.values()) {
        putDocument(document);
    }
    for (const std::string& rootId : other.rootIds()) {
        addRootId(rootId, nullptr);
    }
    for (const auto& [rootId, companion] : other.m_companions) {
        m_companions.insert_or_assign(rootId, companion);
    }
    addRejectReasons(std::vector<RejectionSpec>(other.m_rejections));  // `other` may be this
    m_single = wasEmpty ? other.m_single : m_single;
}

void ManageableData::overlay(ManageableData&& other) {
    if (isBlank()) {
        other.m_dictionary = m_dictionary;
        *this = std::move(other);
    } else {
        overlay(std::as_const(other));
    }
}

void ManageableData::clearAll() {
    m_text.reset();
    m_rootIds.clear();
    m_single = false;
    m_documents.clear();
    m_schemas.clear();
    m_rejections.clear();
    m_companions.clear();
}

}  // namespace vireo
