#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Visibility.h"
#include "data/DxlDocument.h"
#include "data/DxlSchema.h"
#include "data/NamedSet.h"

namespace vireo {

/// A store of documents and schemas by name. Locks itself; what it hands out is shared and never
/// changes, so it stays valid whatever happens to the collection.
class VIREO_API DxlCollection : public DxlDictionary {
public:
    explicit DxlCollection(std::string name);
    DxlCollection(const DxlCollection& other);
    DxlCollection& operator=(const DxlCollection& other);

    const std::string& getName() const { return m_name; }

    /// Adds the documents and schemas of a configuration file. All or nothing: a missing or
    /// malformed file adds nothing, logs one error line and answers false. A document or schema
    /// whose name is taken is left out with a warning; the first stays.
    bool importFromFile(const std::string& fileName);

    DxlDocumentPointer getDocument(const std::string& name) const;
    std::shared_ptr<const DxlSchema> getSchema(const std::string& name) const;
    std::shared_ptr<const DxlSchema> findSchema(const std::string& name) const override;

    /// A new empty schema under construction; it replaces one of the same name.
    std::shared_ptr<DxlSchema> makeSchema(const std::string& name);
    /// Makes and keeps a document with the schema's defaults; null when there is no such schema.
    /// A document of that name that is there already stays and is the answer.
    DxlDocumentPointer makeDocument(const std::string& schemaName, const std::string& documentName);
    /// Keeps `document`, replacing one of the same name.
    void putDocument(DxlDocumentPointer document);
    void putSchema(std::shared_ptr<const DxlSchema> schema);
    /// False when there was none.
    bool deleteDocument(const std::string& name);
    void clear();

    /// Everything held, ordered by name.
    std::vector<DxlDocumentPointer> documents() const;
    std::vector<std::shared_ptr<const DxlSchema>> schemas() const;

private:
    std::string m_name;
    mutable std::mutex m_mutex;
    NamedSet<DxlDocument> m_documents;
    NamedSet<DxlSchema> m_schemas;
};

}  // namespace vireo
