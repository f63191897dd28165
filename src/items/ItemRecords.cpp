#include "items/ItemRecords.h"

#include <memory>

#include "data/ManageableData.h"
#include "items/ItemCatalogue.h"

namespace vireo {
namespace {

/// The record's own schema of the document's name, else the master collection's of that name, else
/// the item's configured one.
std::shared_ptr<const DxlSchema> rightSchema(const ItemCatalogue& catalogue,
                                             const ManageableData& record,
                                             const DxlDocument& document) {
    if (auto schema = record.getSchema(document.schemaName())) {
        return schema;
    }
    if (auto schema = catalogue.master().getSchema(document.schemaName())) {
        return schema;
    }
    return catalogue.master().getSchema(catalogue.findSchemaName(document.getName()));
}

/// Lays a text that was written without a schema out as the item's branches and leaves.
bool layOut(ManageableData& record, const DxlSchema& schema, const DxlDocument& document) {
    record.makeDocument(schema.getName(), document.getName());
    return record.populate(document.getName(), document.root()->text());
}

}  // namespace

void ItemRecords::adoptSchema(const ItemCatalogue& catalogue, ManageableData& record,
                              const std::string& rootId) {
    const DxlDocumentPointer document = record.getDocument(rootId);
    const auto schema = rightSchema(catalogue, record, *document);
    if (!schema) {
        return;
    }
    record.putSchema(schema);
    const DxlNode& root = *document->root();
    if (!root.text().empty() && schema->root()->kind() == DxlNode::Kind::eBranch &&
        layOut(record, *schema, *document)) {
        return;
    }
    if (root.getName() == schema->getName()) {
        record.putDocument(document);
    } else {
        record.putDocument(std::make_shared<const DxlDocument>(
            rootId, std::make_shared<const DxlNode>(root, schema->getName())));
    }
}

void ItemRecords::copyItem(const ManageableData& source, ManageableData& target,
                           const std::string& rootId) {
    if (const DxlDocumentPointer document = source.getDocument(rootId)) {
        if (!target.getSchema(document->schemaName())) {
            target.copySchema(document->schemaName(), source);
        }
        target.putDocument(document);
    }
}

}  // namespace vireo
