#include "service/ClientUtils.h"

#include "data/XmlTree.h"

namespace vireo {
namespace {

void appendText(std::string& out, const DxlNode& node) {
    out.append(node.text());
    for (const DxlNode::Pointer& child : node.children()) {
        appendText(out, *child);
    }
}

}  // namespace

std::string ClientUtils::extractValueFromXMLString(const std::string& xml,
                                                   const std::string& name) {
    DxlNode fragment("fragment", DxlNode::Kind::eBranch);
    std::string text;
    if (!XmlTree::parseFragment(xml, fragment)) {
        return text;
    }
    if (const DxlNode* const found = fragment.findBelow(name)) {
        appendText(text, *found);
    }
    return text;
}

}  // namespace vireo
