#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "data/DxlDocument.h"
#include "data/DxlTree.h"
#include "data/PlainXml.h"

namespace vireo {

/// The content of a configuration document that is a plain list of rows, as nearly all of them are.
/// It stays the text of its file, which was checked; whoever wants the rows reads them again, which
/// takes less than keeping them apart.
class RowTable : public DxlTreeSource {
public:
    /// Reads the document that begins at `xml`, a place in `file`, and moves behind it. Null when
    /// it is not plain. `file` has no bytes that XML cannot carry.
    static DxlDocumentPointer readDocument(PlainXml& xml,
                                           const std::shared_ptr<const std::string>& file);

    /// The place before the first row; `takeNextRow` reads them all.
    PlainXml rows() const { return PlainXml(m_rows); }
    std::size_t count() const { return m_count; }
    /// Whether a row holds elements, not a text.
    bool hasCells() const { return m_hasCells; }
    /// Whether a text may have to be decoded.
    bool hasReferences() const { return m_hasReferences; }

    /// The text that is meant by what is written; not when a reference in it is wrong.
    static bool decode(std::string_view written, std::string& text);

protected:
    DxlNode::Pointer makeRoot() const override;

private:
    using DxlTreeSource::DxlTreeSource;

    bool readRows(PlainXml& xml);
    /// Whether all references in the texts are right.
    bool areDecodable() const;

    std::shared_ptr<const std::string> m_file;
    std::string_view m_rows;
    std::size_t m_count = 0;
    bool m_hasCells = false;
    bool m_hasReferences = false;
};

}  // namespace vireo
