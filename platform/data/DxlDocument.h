#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <string_view>

#include "Visibility.h"
#include "data/DxlNode.h"
#include "data/DxlTree.h"

namespace vireo {

class DxlResultSet;

/// A named value tree. Immutable and shared: to change an item, a new document takes the place of
/// the old one in its collection. Safe from every thread.
class VIREO_API DxlDocument {
public:
    DxlDocument(std::string name, DxlNode::Pointer root);
    /// Of a tree that is made when somebody asks for it.
    DxlDocument(std::string name, std::shared_ptr<const DxlTreeSource> source);
    ~DxlDocument();
    DxlDocument(const DxlDocument&) = delete;
    DxlDocument& operator=(const DxlDocument&) = delete;

    const std::string& getName() const { return m_name; }
    /// The root node's name: that of the document's schema.
    const std::string& schemaName() const { return m_root.name(); }
    const DxlNode::Pointer& root() const { return m_root.root(); }
    /// What the tree is made from; null where it was there from the beginning.
    const std::shared_ptr<const DxlTreeSource>& source() const { return m_root.source(); }

    /// The nodes at `path`, in document order, one row per parent: for every node that matches the
    /// path without its last step, its children of the last step's name, or one null row when it
    /// has none. So lists that are read side by side stay aligned when an element is missing.
    /// "/" is the root, "/a/b" starts at the root's children, "//*" is every node, the root
    /// included. A path of another form selects nothing.
    std::unique_ptr<DxlResultSet> select(std::string_view path) const;

    /// The text form `<document name="N" schema="S">...</document>`; made once, then kept.
    const std::string& text() const;
    /// Appends the text form. That of a single leaf is not kept: making it again takes less than
    /// the memory that it needs beside the leaf.
    void appendText(std::string& out) const;

private:
    void writeTo(std::string& out) const;

    const std::string m_name;
    const DxlTree m_root;
    mutable std::atomic<const std::string*> m_text{nullptr};
};

using DxlDocumentPointer = std::shared_ptr<const DxlDocument>;

}  // namespace vireo
