#include "items/ItemRecords.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <unordered_set>

#include "data/ManageableData.h"
#include "items/ItemCatalogue.h"

namespace vireo {
namespace {

/// The item's configured schema. Only an item that has none may bring its own.
std::shared_ptr<const DxlSchema> rightSchema(const ItemCatalogue& catalogue,
                                             const ManageableData& record,
                                             const DxlDocument& document) {
    const DxlCollection& master = catalogue.master();
    if (auto schema = master.getSchema(catalogue.configuredSchemaName(document.getName()))) {
        return schema;
    }
    auto schema = record.getSchema(document.schemaName());
    return schema ? schema : master.getSchema(document.schemaName());
}

/// Whether a leaf carries text alone, and a branch with named parts those alone. A branch without
/// named parts takes everything.
bool conforms(const DxlNode& node, const DxlNode& schema) {
    if (schema.kind() == DxlNode::Kind::eLeaf) {
        return node.children().empty();
    }
    if (schema.children().empty()) {
        return true;
    }
    if (node.children().empty()) {
        return false;  // a text, or nothing, where there should be parts
    }
    return std::all_of(node.children().begin(), node.children().end(), [&schema](const auto& part) {
        if (part->kind() == DxlNode::Kind::eText) {
            return part->text().find_first_not_of(" \t\r\n") == std::string::npos;
        }
        const DxlNode* known = schema.child(part->getName());
        return known != nullptr && conforms(*part, *known);
    });
}

/// Lays a text that was written without a schema out as the item's branches and leaves.
bool layOut(ManageableData& record, const DxlSchema& schema, const DxlDocument& document) {
    record.makeDocument(schema.getName(), document.getName());
    return record.populate(document.getName(), document.root()->text()) &&
           conforms(*record.getDocument(document.getName())->root(), *schema.root());
}

}  // namespace

bool ItemRecords::adoptSchema(const ItemCatalogue& catalogue, ManageableData& record,
                              const std::string& rootId) {
    const DxlDocumentPointer document = record.getDocument(rootId);
    if (document->schemaName() == kMasterItemMap) {
        return false;  // nobody's item looks like the service's own map
    }
    const auto schema = rightSchema(catalogue, record, *document);
    if (!schema) {
        return true;
    }
    record.putSchema(schema);
    const DxlNode& root = *document->root();
    const bool isBranch = schema->root()->kind() == DxlNode::Kind::eBranch;
    if (isBranch && root.children().empty()) {
        const bool isLaidOut = layOut(record, *schema, *document);
        if (!isLaidOut) {
            record.putDocument(document);
        }
        return isLaidOut;
    }
    if (root.getName() != schema->getName()) {
        record.putDocument(std::make_shared<const DxlDocument>(
            rootId, std::make_shared<const DxlNode>(root, schema->getName())));
    }
    return conforms(root, *schema->root());
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

bool ItemRecords::takeRefusals(const ManageableData& answer, const std::vector<std::string>& sent,
                               ManageableData& target) {
    const std::unordered_set<std::string_view> own(sent.begin(), sent.end());
    bool isAny = false;
    for (const RejectionSpec& refusal : answer.rejections()) {
        if (own.contains(refusal.rootId())) {
            target.addRejectReason(refusal.rootId(), refusal.nodePath(), refusal.reason());
            isAny = true;
        }
    }
    return isAny;
}

void ItemRecords::takeItem(const ManageableData& answer, const DxlCollection& master,
                           ManageableData& target, const std::string& rootId) {
    const DxlDocumentPointer document = answer.getDocument(rootId);
    if (!document) {
        return;
    }
    // A schema is shared by all items of its name, so no owner may replace it for the others.
    const std::string& schemaName = document->schemaName();
    if (!target.copySchema(schemaName, master) && !target.getSchema(schemaName)) {
        target.copySchema(schemaName, answer);
    }
    target.putDocument(document);
}

void ItemRecords::copyItems(const ManageableData& source, ManageableData& target,
                            const std::vector<std::string>& rootIds) {
    for (const std::string& rootId : rootIds) {
        copyItem(source, target, rootId);
    }
}

void ItemRecords::refuse(ManageableData& record, const std::string& rootId,
                         const std::string& reason) {
    record.addRejectReason(rootId, "//*", reason);
}

}  // namespace vireo
