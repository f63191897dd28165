#include "data/DxlDocument.h"

#include <utility>
#include <vector>

#include "data/DxlResultSet.h"
#include "data/XmlText.h"

namespace vireo {
namespace {

using Rows = std::vector<const DxlNode*>;

void collectAll(const DxlNode& node, Rows& rows) {
    rows.push_back(&node);
    for (const DxlNode::Pointer& child : node.children()) {
        if (child->kind() != DxlNode::Kind::eText) {
            collectAll(*child, rows);
        }
    }
}

/// Takes the next step off the front of "/a/b"; false when it is no name.
bool takeStep(std::string_view& path, std::string_view& step) {
    path.remove_prefix(1);
    const std::size_t end = path.find('/');
    step = path.substr(0, end);
    path = end == std::string_view::npos ? std::string_view{} : path.substr(end);
    return XmlText::isName(step);
}

Rows childrenOf(const Rows& parents, std::string_view name, bool nullWhenAbsent) {
    Rows rows;
    for (const DxlNode* parent : parents) {
        const std::size_t before = rows.size();
        parent->forEachChild(name, [&rows](const DxlNode& child) { rows.push_back(&child); });
        if (nullWhenAbsent && rows.size() == before) {
            rows.push_back(nullptr);
        }
    }
    return rows;
}

Rows rowsAt(const DxlNode& root, std::string_view path) {
    Rows rows;
    if (path == "//*") {
        collectAll(root, rows);
        return rows;
    }
    if (path.empty() || path.front() != '/') {
        return rows;
    }
    rows.push_back(&root);
    if (path == "/") {
        return rows;
    }
    while (!path.empty()) {
        std::string_view step;
        if (!takeStep(path, step)) {
            return {};
        }
        rows = childrenOf(rows, step, path.empty());
    }
    return rows;
}

}  // namespace

DxlDocument::DxlDocument(std::string name, DxlNode::Pointer root)
    : m_name(std::move(name)), m_root(std::move(root)) {}

DxlDocument::DxlDocument(std::string name, std::shared_ptr<const DxlTreeSource> source)
    : m_name(std::move(name)), m_root(std::move(source)) {}

DxlDocument::~DxlDocument() {
    delete m_text.load(std::memory_order_acquire);
}

std::unique_ptr<DxlResultSet> DxlDocument::select(std::string_view path) const {
    return std::make_unique<DxlResultSet>(root(), rowsAt(*m_root, path));
}

const std::string& DxlDocument::text() const {
    if (const std::string* kept = m_text.load(std::memory_order_acquire)) {
        return *kept;
    }
    auto made = std::make_unique<std::string>();
    writeTo(*made);
    const std::string* expected = nullptr;
    if (m_text.compare_exchange_strong(expected, made.get(), std::memory_order_acq_rel)) {
        return *made.release();
    }
    return *expected;  // another thread was first
}

void DxlDocument::appendText(std::string& out) const {
    if (m_root->children().empty() && m_text.load(std::memory_order_acquire) == nullptr) {
        writeTo(out);
    } else {
        out.append(text());
    }
}

void DxlDocument::writeTo(std::string& out) const {
    out.append("<document name=\"");
    XmlText::appendEscapedAttribute(out, m_name);
    out.append("\" schema=\"");
    XmlText::appendEscapedAttribute(out, schemaName());
    out.append("\">");
    m_root->appendInnerXml(out);
    out.append("</document>");
}

}  // namespace vireo
