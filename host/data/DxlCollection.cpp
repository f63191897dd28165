#include "data/DxlCollection.h"

#include <utility>

#include "data/ConfigurationFile.h"

namespace vireo {

DxlCollection::DxlCollection(std::string name) : m_name(std::move(name)) {}

DxlCollection::DxlCollection(const DxlCollection& other) {
    const std::lock_guard lock(other.m_mutex);
    m_name = other.m_name;
    m_documents = other.m_documents;
    m_schemas = other.m_schemas;
}

DxlCollection& DxlCollection::operator=(const DxlCollection& other) {
    if (this != &other) {
        DxlCollection copy(other);
        const std::lock_guard lock(m_mutex);
        m_name = std::move(copy.m_name);
        m_documents = std::move(copy.m_documents);
        m_schemas = std::move(copy.m_schemas);
    }
    return *this;
}

bool DxlCollection::importFromFile(const std::string& fileName) {
    ConfigurationFile file;
    if (!file.read(fileName)) {
        return false;
    }
    const std::lock_guard lock(m_mutex);
    for (auto& schema : file.schemas()) {
        const std::string name = schema->getName();
        if (!m_schemas.insert(std::move(schema))) {
            file.warnOfTakenName("schema", name);
        }
    }
    for (auto& document : file.documents()) {
        const std::string name = document->getName();
        if (!m_documents.insert(std::move(document))) {
            file.warnOfTakenName("document", name);
        }
    }
    return true;
}

DxlDocumentPointer DxlCollection::getDocument(const std::string& name) const {
    const std::lock_guard lock(m_mutex);
    return m_documents.find(name);
}

std::shared_ptr<const DxlSchema> DxlCollection::getSchema(const std::string& name) const {
    const std::lock_guard lock(m_mutex);
    return m_schemas.find(name);
}

std::shared_ptr<const DxlSchema> DxlCollection::findSchema(const std::string& name) const {
    return getSchema(name);
}

std::shared_ptr<DxlSchema> DxlCollection::makeSchema(const std::string& name) {
    auto schema = std::make_shared<DxlSchema>(name);
    putSchema(schema);
    return schema;
}

DxlDocumentPointer DxlCollection::makeDocument(const std::string& schemaName,
                                               const std::string& documentName) {
    // In one step: a value that another thread writes meanwhile must not be lost to a default.
    const std::lock_guard lock(m_mutex);
    if (auto document = m_documents.find(documentName)) {
        return document;
    }
    const auto schema = m_schemas.find(schemaName);
    if (!schema) {
        return nullptr;
    }
    auto document = std::make_shared<const DxlDocument>(documentName, schema->root());
    m_documents.insert(document);
    return document;
}

void DxlCollection::putDocument(DxlDocumentPointer document) {
    const std::lock_guard lock(m_mutex);
    m_documents.put(std::move(document));
}

void DxlCollection::putSchema(std::shared_ptr<const DxlSchema> schema) {
    const std::lock_guard lock(m_mutex);
    m_schemas.put(std::move(schema));
}

bool DxlCollection::deleteDocument(const std::string& name) {
    const std::lock_guard lock(m_mutex);
    return m_documents.erase(name);
}

void DxlCollection::clear() {
    const std::lock_guard lock(m_mutex);
    m_documents.clear();
    m_schemas.clear();
}

std::vector<DxlDocumentPointer> DxlCollection::documents() const {
    const std::lock_guard lock(m_mutex);
    return m_documents.sorted();
}

std::vector<std::shared_ptr<const DxlSchema>> DxlCollection::schemas() const {
    const std::lock_guard lock(m_mutex);
    return m_schemas.sorted();
}

}  // namespace vireo
