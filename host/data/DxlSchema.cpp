#include "data/DxlSchema.h"

#include <utility>

#include "data/XmlText.h"

namespace vireo {
namespace {

constexpr DxlDataType kString{"string"};

void appendNode(std::string& out, const DxlNode& node, const char* element);

void appendChildren(std::string& out, const DxlNode& node) {
    for (const DxlNode::Pointer& child : node.children()) {
        appendNode(out, *child, child->kind() == DxlNode::Kind::eBranch ? "branch" : "data");
    }
}

void appendNode(std::string& out, const DxlNode& node, const char* element) {
    out.append(1, '<').append(element).append(" name=\"");
    XmlText::appendEscapedAttribute(out, node.getName());
    out.push_back('"');
    if (node.kind() == DxlNode::Kind::eLeaf) {
        out.append(" type=\"").append(kString.name).append("\">");
        XmlText::appendEscaped(out, node.text());
    } else {
        out.push_back('>');
        appendChildren(out, node);
    }
    out.append("</").append(element).append(1, '>');
}

}  // namespace

DxlSchema::DxlSchema(std::string name)
    : m_building(std::make_shared<DxlNode>(std::move(name), DxlNode::Kind::eBranch)),
      m_root(m_building) {}

DxlSchema::DxlSchema(DxlNode::Pointer root) : m_root(std::move(root)) {}

DxlSchema::DxlSchema(std::shared_ptr<const DxlTreeSource> source) : m_root(std::move(source)) {}

DxlSchemaNode* DxlSchema::makeBranchNode(DxlSchemaNode* parent, const std::string& name,
                                         int /*occurs*/) {
    if (parent == nullptr || !XmlText::isName(name)) {
        return nullptr;
    }
    auto node = std::make_shared<DxlNode>(name, DxlNode::Kind::eBranch);
    DxlSchemaNode* made = node.get();
    parent->append(std::move(node));
    return made;
}

DxlSchemaNode* DxlSchema::makeDataNode(DxlSchemaNode* parent, const std::string& name,
                                       int /*occurs*/, const DxlDataType* type,
                                       const std::string& value) {
    if (parent == nullptr || type == nullptr || !XmlText::isName(name)) {
        return nullptr;
    }
    auto node = std::make_shared<DxlNode>(name, DxlNode::Kind::eLeaf, value);
    DxlSchemaNode* made = node.get();
    parent->append(std::move(node));
    return made;
}

const DxlDataType* DxlSchema::findDataType(std::string_view name) {
    return name == kString.name ? &kString : nullptr;
}

std::string DxlSchema::text() const {
    std::string out;
    appendText(out);
    return out;
}

void DxlSchema::appendText(std::string& out) const {
    appendNode(out, *m_root, "schema");
}

}  // namespace vireo
