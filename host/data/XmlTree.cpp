#include "data/XmlTree.h"

#include <pugixml.hpp>
#include <unordered_set>
#include <utility>

#include "data/XmlSource.h"
#include "data/XmlText.h"

namespace vireo {
namespace {

// White space is kept and line ends are left alone: values have to survive byte for byte.
constexpr unsigned kParseFlags =
    pugi::parse_escapes | pugi::parse_cdata | pugi::parse_ws_pcdata | pugi::parse_fragment;

// The parser passes over one at the beginning of whatever it reads.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isText(const pugi::xml_node& node) {
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

bool parseSource(pugi::xml_document& document, std::string_view source, std::string& error) {
    if (!XmlSource::check(source, error)) {
        return false;
    }
    const pugi::xml_parse_result result =
        document.load_buffer(source.data(), source.size(), kParseFlags, pugi::encoding_utf8);
    if (!result) {
        error = std::string(result.description()) + " at position " + std::to_string(result.offset);
        return false;
    }
    return true;
}

/// Fills `target` with the children of `element`.
bool fill(DxlNode& target, const pugi::xml_node& element, XmlTree::Space space, int depth,
          std::string& error);

/// What was decoded is checked once more: it does not depend on two readers of the source agreeing.
bool checkText(std::string_view text, std::string& error) {
    const auto uncarriable = XmlText::findUncarriable(text);
    if (uncarriable) {
        error = *uncarriable + " of a text";
    }
    return !uncarriable;
}

/// Whether all attributes of the element have names, each another one, and good values.
bool checkAttributes(const pugi::xml_node& element, std::string& error) {
    std::unordered_set<std::string_view> seen;
    for (const pugi::xml_attribute& attribute : element.attributes()) {
        if (!XmlText::isName(attribute.name())) {
            error = "\"" + std::string(attribute.name()) + "\" is no attribute name";
            return false;
        }
        if (!seen.insert(attribute.name()).second) {
            error = "the attribute \"" + std::string(attribute.name()) + "\" is there twice";
            return false;
        }
        if (!checkText(attribute.value(), error)) {
            return false;
        }
    }
    return true;
}

bool appendElement(DxlNode& target, const pugi::xml_node& element, XmlTree::Space space, int depth,
                   std::string& error) {
    if (!XmlText::isName(element.name())) {
        error = "\"" + std::string(element.name()) + "\" is no element name";
        return false;
    }
    auto child = std::make_shared<DxlNode>(element.name(), DxlNode::Kind::eLeaf);
    if (!checkAttributes(element, error)) {
        return false;
    }
    for (const pugi::xml_attribute& attribute : element.attributes()) {
        child->addAttribute(attribute.name(), attribute.value());
    }
    if (!fill(*child, element, space, depth + 1, error)) {
        return false;
    }
    target.append(std::move(child));
    return true;
}

std::string textOf(const pugi::xml_node& element) {
    std::string text;
    for (const pugi::xml_node& child : element.children()) {
        if (isText(child)) {
            text.append(child.value());
        }
    }
    return text;
}

bool fill(DxlNode& target, const pugi::xml_node& element, XmlTree::Space space, int depth,
          std::string& error) {
    if (depth > XmlTree::kMaximumDepth) {
        error = "nested deeper than " + std::to_string(XmlTree::kMaximumDepth);
        return false;
    }
    const bool hasElements = element.find_child(
        [](const pugi::xml_node& child) { return child.type() == pugi::node_element; });
    if (!hasElements) {
        target.setText(textOf(element));
        return checkText(target.text(), error);
    }
    for (const pugi::xml_node& child : element.children()) {
        if (child.type() == pugi::node_element) {
            if (!appendElement(target, child, space, depth, error)) {
                return false;
            }
        } else if (isText(child) &&
                   !(space == XmlTree::Space::eDropIndentation && isBlank(child.value()))) {
            if (!checkText(child.value(), error)) {
                return false;
            }
            target.append(
                std::make_shared<DxlNode>(std::string(), DxlNode::Kind::eText, child.value()));
        }
    }
    return true;
}

std::string attribute(const pugi::xml_node& element, const char* name) {
    return element.attribute(name).value();
}

/// Fills the schema node `target` from the `<branch>` and `<data>` children of `element`.
bool fillSchema(DxlNode& target, const pugi::xml_node& element, int depth, std::string& error) {
    if (depth > XmlTree::kMaximumDepth) {
        error = "nested deeper than " + std::to_string(XmlTree::kMaximumDepth);
        return false;
    }
    for (const pugi::xml_node& child : element.children()) {
        if (child.type() != pugi::node_element) {
            continue;
        }
        const std::string kind = child.name();
        const std::string name = attribute(child, "name");
        if (!XmlTree::checkElement(child, kind != "data", error)) {
            return false;
        }
        if (!XmlText::isName(name)) {
            error = "<" + kind + "> has no usable name \"" + name + "\"";
            return false;
        }
        std::shared_ptr<DxlNode> node;
        if (kind == "branch") {
            node = std::make_shared<DxlNode>(name, DxlNode::Kind::eBranch);
            if (!fillSchema(*node, child, depth + 1, error)) {
                return false;
            }
        } else if (kind == "data" && DxlSchema::findDataType(attribute(child, "type")) != nullptr) {
            node = std::make_shared<DxlNode>(name, DxlNode::Kind::eLeaf, textOf(child));
        } else {
            error = "<" + kind + " name=\"" + name + "\" type=\"" + attribute(child, "type") +
                    "\"> is no schema node";
            return false;
        }
        target.append(std::move(node));
    }
    return true;
}

}  // namespace

pugi::xml_node XmlTree::parse(pugi::xml_document& document, std::string_view source,
                              const char* rootName, std::string& error) {
    if (!parseSource(document, source, error)) {
        return {};
    }
    pugi::xml_node root;
    for (const pugi::xml_node& node : document.children()) {
        if (node.type() == pugi::node_element && !root) {
            root = node;
        } else if (node.type() == pugi::node_element || (isText(node) && !isBlank(node.value()))) {
            error = "something follows or precedes the root element";
            return {};
        }
    }
    if (!root || std::string_view(root.name()) != rootName) {
        error = "the root element is not <" + std::string(rootName) + ">";
        return {};
    }
    return root;
}

bool XmlTree::parseFragment(std::string_view fragment, DxlNode& target) {
    std::string marked;
    if (fragment.starts_with(kByteOrderMark)) {  // inside a document it is a character like others
        marked.append(kByteOrderMark).append(fragment);
        fragment = marked;
    }
    pugi::xml_document document;
    std::string error;
    DxlNode parsed(target.getName(), DxlNode::Kind::eBranch);
    if (!parseSource(document, fragment, error) ||
        !fill(parsed, document, Space::eKeep, 1, error)) {
        return false;
    }
    target.adoptContent(parsed);
    return true;
}

bool XmlTree::checkElement(const pugi::xml_node& element, bool mayHaveElements,
                           std::string& error) {
    if (!checkAttributes(element, error)) {
        return false;
    }
    for (const pugi::xml_node& child : element.children()) {
        const bool isElement = child.type() == pugi::node_element;
        if (isText(child) && !checkText(child.value(), error)) {
            return false;
        }
        if (isElement != mayHaveElements && (isElement || !isBlank(child.value()))) {
            error = "<" + std::string(element.name()) + "> may not hold " +
                    (isElement ? "elements" : "text");
            return false;
        }
    }
    return true;
}

DxlDocumentPointer XmlTree::readDocument(const pugi::xml_node& element, Space space,
                                         std::string& error) {
    std::string name = attribute(element, "name");
    const std::string schema = attribute(element, "schema");
    if (!checkAttributes(element, error)) {
        return nullptr;
    }
    if (name.empty() || !XmlText::isName(schema)) {
        error =
            "<document name=\"" + name + "\" schema=\"" + schema + "\"> needs a name and a schema";
        return nullptr;
    }
    auto root = std::make_shared<DxlNode>(schema, DxlNode::Kind::eLeaf);
    if (!fill(*root, element, space, 1, error)) {
        return nullptr;
    }
    return std::make_shared<const DxlDocument>(std::move(name), std::move(root));
}

std::shared_ptr<const DxlSchema> XmlTree::readSchema(const pugi::xml_node& element,
                                                     std::string& error) {
    const std::string name = attribute(element, "name");
    if (!checkElement(element, !element.attribute("type"), error)) {
        return nullptr;
    }
    if (!XmlText::isName(name)) {
        error = "<schema> has no usable name \"" + name + "\"";
        return nullptr;
    }
    const pugi::xml_attribute type = element.attribute("type");
    if (!type) {
        auto root = std::make_shared<DxlNode>(name, DxlNode::Kind::eBranch);
        if (!fillSchema(*root, element, 1, error)) {
            return nullptr;
        }
        return std::make_shared<const DxlSchema>(std::move(root));
    }
    if (DxlSchema::findDataType(type.value()) == nullptr) {
        error = "<schema name=\"" + name + "\"> has the unknown type \"" + type.value() + "\"";
        return nullptr;
    }
    return std::make_shared<const DxlSchema>(
        std::make_shared<DxlNode>(name, DxlNode::Kind::eLeaf, textOf(element)));
}

}  // namespace vireo
