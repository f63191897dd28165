#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "Visibility.h"
#include "data/DxlNode.h"
#include "data/DxlTree.h"

namespace vireo {

/// A type that data nodes can have. Only "string" exists: the service keeps texts.
struct DxlDataType {
    std::string_view name;
};

/// The template of an item's document: a tree of branches and data nodes with their defaults. Its
/// root node has the schema's name. Built by one thread; unchanged once a document was made of it.
class VIREO_API DxlSchema {
public:
    explicit DxlSchema(std::string name);
    /// Takes over a finished tree; the schema is named like its root.
    explicit DxlSchema(DxlNode::Pointer root);
    /// Of a finished tree that is made when somebody asks for it.
    explicit DxlSchema(std::shared_ptr<const DxlTreeSource> source);

    const std::string& getName() const { return m_root.name(); }
    const DxlNode::Pointer& root() const { return m_root.root(); }

    /// The node under which children are made; null once the schema is finished.
    DxlSchemaNode* buildRoot() { return m_building.get(); }
    /// Adds a branch below `parent` and returns it; the schema owns it. `occurs` is how often it
    /// may stand there. Null when `parent` is null or `name` is no XML name.
    DxlSchemaNode* makeBranchNode(DxlSchemaNode* parent, const std::string& name, int occurs);
    /// Adds a data node with the default `value`, likewise. Null also for a null type.
    DxlSchemaNode* makeDataNode(DxlSchemaNode* parent, const std::string& name, int occurs,
                                const DxlDataType* type, const std::string& value);
    /// The type of that name, or null.
    static const DxlDataType* findDataType(std::string_view name);
    /// Ends the building: `buildRoot` is null from now on.
    void finish() { m_building.reset(); }

    /// The text form: `<schema name="N">...</schema>`.
    std::string text() const;
    void appendText(std::string& out) const;

private:
    std::shared_ptr<DxlNode> m_building;
    DxlTree m_root;
};

/// What a record may look schemas up in.
class VIREO_API DxlDictionary {
public:
    virtual ~DxlDictionary() = default;
    /// The schema of that name, or null. Safe from every thread.
    virtual std::shared_ptr<const DxlSchema> findSchema(const std::string& name) const = 0;
};

}  // namespace vireo
