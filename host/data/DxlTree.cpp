#include "data/DxlTree.h"

namespace vireo {

DxlTreeSource::DxlTreeSource(std::string name) : m_name(std::move(name)) {}

DxlTreeSource::~DxlTreeSource() = default;

const DxlNode::Pointer& DxlTreeSource::root() const {
    std::call_once(m_once, [this] { m_root = makeRoot(); });
    return m_root;
}

}  // namespace vireo
