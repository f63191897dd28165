#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Visibility.h"

namespace vireo {

/// One node of an item's value tree or of a schema. In a schema the text is the default value.
///
/// A tree is built by one thread and never changed once a document holds it; from then on it is
/// shared between collections, records and threads. Whoever wants another tree copies the nodes
/// from the root down to the change and shares the rest.
class VIREO_API DxlNode {
public:
    enum class Kind : std::uint8_t {
        eLeaf,    ///< carries text
        eBranch,  ///< carries children
        eText,    ///< a piece of text between the children of a branch; has no name
    };
    using Pointer = std::shared_ptr<const DxlNode>;
    using Attribute = std::pair<std::string, std::string>;

    DxlNode(std::string name, Kind kind, std::string text = {});
    /// Copies the node under another name. Children are shared, not copied.
    DxlNode(const DxlNode& source, std::string name);
    DxlNode(const DxlNode& source);
    DxlNode& operator=(const DxlNode&) = delete;
    /// A leaf with the name and the attributes of `like`.
    static std::shared_ptr<DxlNode> leafLike(const DxlNode& like, std::string text);

    const std::string& getName() const { return m_name; }
    Kind kind() const { return m_kind; }
    /// A leaf's text, a branch's inner XML.
    std::string value() const;
    /// A leaf's text; empty for a branch.
    const std::string& text() const { return m_text; }
    const std::vector<Pointer>& children() const { return m_children; }

    /// The first child of that name, or null. By hash where there are many children.
    const DxlNode* child(std::string_view name) const;
    /// Calls `visit(const DxlNode&)` for every child of that name, in document order.
    template <class Visit>
    void forEachChild(std::string_view name, Visit&& visit) const;
    /// The first node of that name below this one in document order, or null.
    const DxlNode* findBelow(std::string_view name) const;

    /// Appends what stands between the start and the end tag of this node.
    void appendInnerXml(std::string& out) const;

    // Building, before the tree is shared.
    void append(Pointer child);
    void replaceChild(std::size_t position, Pointer child);
    void replaceChildren(std::vector<Pointer> children);
    void addAttribute(std::string name, std::string value);
    void setText(std::string text) { m_text = std::move(text); }
    /// Makes this node carry what `source` carries, under its own name.
    void adoptContent(const DxlNode& source);

private:
    struct Occurrences {
        std::uint32_t first = 0;
        std::uint32_t count = 0;
    };
    using Index = std::unordered_map<std::string_view, Occurrences>;

    Occurrences occurrences(std::string_view name) const;
    void indexChild(std::size_t position);
    void rebuildIndex();
    void appendXml(std::string& out) const;

    std::string m_name;
    std::string m_text;
    std::vector<Pointer> m_children;
    std::unique_ptr<std::vector<Attribute>> m_attributes;  // few nodes have any
    std::unique_ptr<Index> m_index;                        // only where there are many children
    Kind m_kind;
};

using DxlSchemaNode = DxlNode;

template <class Visit>
void DxlNode::forEachChild(std::string_view name, Visit&& visit) const {
    const Occurrences found = occurrences(name);
    std::uint32_t left = found.count;
    for (std::size_t i = found.first; left > 0; ++i) {
        if (m_children[i]->m_name == name) {
            visit(*m_children[i]);
            --left;
        }
    }
}

/// A handle of one node. Keeps the tree alive: it shows the state at the time of the look-up
/// whatever is written later. A default-constructed handle is null.
class VIREO_API DataNode {
public:
    DataNode() = default;
    /// `node` is in the tree that `root` owns, or null.
    DataNode(DxlNode::Pointer root, const DxlNode* node)
        : m_node(node ? DxlNode::Pointer(std::move(root), node) : nullptr) {}

    explicit operator bool() const { return m_node != nullptr; }
    /// The node; only of a handle that is not null.
    const DxlNode& operator*() const { return *m_node; }
    const DxlNode* operator->() const { return m_node.get(); }
    const DxlNode::Pointer& pointer() const { return m_node; }

private:
    DxlNode::Pointer m_node;
};

}  // namespace vireo
