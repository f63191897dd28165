#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "Visibility.h"
#include "data/DxlNode.h"

namespace vireo {

/// Makes a tree when somebody asks for it, once. For what is large and seldom asked for. Safe from
/// every thread.
class VIREO_API DxlTreeSource {
public:
    /// `name` is that of the root.
    explicit DxlTreeSource(std::string name);
    virtual ~DxlTreeSource();
    DxlTreeSource(const DxlTreeSource&) = delete;
    DxlTreeSource& operator=(const DxlTreeSource&) = delete;

    const std::string& getName() const { return m_name; }
    /// The root; never null. Makes the tree the first time, others wait meanwhile.
    const DxlNode::Pointer& root() const;

protected:
    /// Makes the tree; called once. The root has the name `getName`. Calls nothing of this object
    /// that needs the tree.
    virtual DxlNode::Pointer makeRoot() const = 0;

private:
    const std::string m_name;
    mutable std::once_flag m_once;
    mutable DxlNode::Pointer m_root;
};

/// A tree that is there, or is made when somebody asks for it. Safe from every thread.
class VIREO_API DxlTree {
public:
    /// Neither is null.
    explicit DxlTree(DxlNode::Pointer root) : m_root(std::move(root)) {}
    explicit DxlTree(std::shared_ptr<const DxlTreeSource> source) : m_source(std::move(source)) {}

    /// The root's name, which needs no tree.
    const std::string& name() const { return m_source ? m_source->getName() : m_root->getName(); }
    const DxlNode::Pointer& root() const { return m_source ? m_source->root() : m_root; }
    const DxlNode& operator*() const { return *root(); }
    const DxlNode* operator->() const { return root().get(); }

    /// What the tree is made from; null where it was there from the beginning.
    const std::shared_ptr<const DxlTreeSource>& source() const { return m_source; }

private:
    DxlNode::Pointer m_root;
    std::shared_ptr<const DxlTreeSource> m_source;
};

}  // namespace vireo
