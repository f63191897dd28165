#include "data/DxlNode.h"

#include "data/XmlText.h"

namespace vireo {
namespace {

// Up to here looking along the children is faster than hashing.
constexpr std::size_t kFewChildren = 8;

}  // namespace

DxlNode::DxlNode(std::string name, Kind kind, std::string text)
    : m_name(std::move(name)), m_text(std::move(text)), m_kind(kind) {}

DxlNode::DxlNode(const DxlNode& source, std::string name)
    : m_name(std::move(name)),
      m_text(source.m_text),
      m_children(source.m_children),
      m_attributes(source.m_attributes
                       ? std::make_unique<std::vector<Attribute>>(*source.m_attributes)
                       : nullptr),
      m_index(source.m_index ? std::make_unique<Index>(*source.m_index) : nullptr),
      m_kind(source.m_kind) {}

DxlNode::DxlNode(const DxlNode& source) : DxlNode(source, source.m_name) {}

std::shared_ptr<DxlNode> DxlNode::leafLike(const DxlNode& like, std::string text) {
    auto leaf = std::make_shared<DxlNode>(like.m_name, Kind::eLeaf, std::move(text));
    if (like.m_attributes) {
        leaf->m_attributes = std::make_unique<std::vector<Attribute>>(*like.m_attributes);
    }
    return leaf;
}

std::string DxlNode::value() const {
    if (m_children.empty()) {
        return m_text;
    }
    std::string xml;
    appendInnerXml(xml);
    return xml;
}

DxlNode::Occurrences DxlNode::occurrences(std::string_view name) const {
    if (m_index) {
        const auto found = m_index->find(name);
        return found == m_index->end() ? Occurrences{} : found->second;
    }
    Occurrences found;
    for (std::uint32_t i = 0; i < m_children.size(); ++i) {
        if (m_children[i]->m_name == name && found.count++ == 0) {
            found.first = i;
        }
    }
    return found;
}

const DxlNode* DxlNode::child(std::string_view name) const {
    const Occurrences found = occurrences(name);
    return found.count == 0 ? nullptr : m_children[found.first].get();
}

const DxlNode* DxlNode::findBelow(std::string_view name) const {
    for (const Pointer& child : m_children) {
        if (child->m_name == name && child->m_kind != Kind::eText) {
            return child.get();
        }
        if (const DxlNode* below = child->findBelow(name)) {
            return below;
        }
    }
    return nullptr;
}

void DxlNode::appendInnerXml(std::string& out) const {
    if (m_children.empty()) {
        XmlText::appendEscaped(out, m_text);
        return;
    }
    for (const Pointer& child : m_children) {
        child->appendXml(out);
    }
}

void DxlNode::appendXml(std::string& out) const {
    if (m_kind == Kind::eText) {
        XmlText::appendEscaped(out, m_text);
        return;
    }
    out.push_back('<');
    out.append(m_name);
    if (m_attributes) {
        for (const auto& [name, value] : *m_attributes) {
            out.append(1, ' ').append(name).append("=\"");
            XmlText::appendEscapedAttribute(out, value);
            out.push_back('"');
        }
    }
    out.push_back('>');
    appendInnerXml(out);
    out.append("</").append(m_name).append(1, '>');
}

void DxlNode::append(Pointer child) {
    m_children.push_back(std::move(child));
    m_kind = Kind::eBranch;
    if (m_index) {
        indexChild(m_children.size() - 1);
    } else if (m_children.size() > kFewChildren) {
        rebuildIndex();
    }
}

void DxlNode::replaceChild(std::size_t position, Pointer child) {
    m_children[position] = std::move(child);
    if (m_index) {
        rebuildIndex();  // the index refers to the names inside the children
    }
}

void DxlNode::replaceChildren(std::vector<Pointer> children) {
    m_children = std::move(children);
    if (m_children.size() > kFewChildren) {
        rebuildIndex();
    } else {
        m_index.reset();
    }
}

void DxlNode::addAttribute(std::string name, std::string value) {
    if (!m_attributes) {
        m_attributes = std::make_unique<std::vector<Attribute>>();
    }
    m_attributes->emplace_back(std::move(name), std::move(value));
}

void DxlNode::adoptContent(const DxlNode& source) {
    m_text = source.m_text;
    m_children = source.m_children;
    m_kind = source.m_kind;
    m_index = source.m_index ? std::make_unique<Index>(*source.m_index) : nullptr;
}

void DxlNode::indexChild(std::size_t position) {
    Occurrences& entry = (*m_index)[m_children[position]->m_name];
    if (entry.count++ == 0) {
        entry.first = static_cast<std::uint32_t>(position);
    }
}

void DxlNode::rebuildIndex() {
    m_index = std::make_unique<Index>();
    m_index->reserve(m_children.size());
    for (std::size_t i = 0; i < m_children.size(); ++i) {
        indexChild(i);
    }
}

}  // namespace vireo
