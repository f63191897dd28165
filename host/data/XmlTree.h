#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "data/DxlDocument.h"
#include "data/DxlNode.h"
#include "data/DxlSchema.h"

namespace pugi {
class xml_document;
class xml_node;
}  // namespace pugi

namespace vireo {

/// Reads XML from outside into trees. Stricter than the parser below it: valid UTF-8, only the
/// predefined entities and character references that XML can carry, no document type, no nesting
/// deeper than 64.
class XmlTree {
public:
    static constexpr int kMaximumDepth = 64;

    enum class Space {
        eKeep,            ///< every blank is content
        eDropIndentation  ///< blanks between elements are layout, as people write files
    };

    /// Parses one document with the root element `rootName`. The result refers to `source`'s copy
    /// inside `document`. A null node and an `error` when it is malformed.
    static pugi::xml_node parse(pugi::xml_document& document, std::string_view source,
                                const char* rootName, std::string& error);

    /// Replaces what `target` carries by the inner XML `fragment`; false when it is malformed,
    /// `target` is unchanged then.
    static bool parseFragment(std::string_view fragment, DxlNode& target);

    /// Whether the element has each attribute once, and elements alone, or text alone, inside.
    static bool checkElement(const pugi::xml_node& element, bool mayHaveElements,
                             std::string& error);

    /// `<document name="N" schema="S">...</document>`; null with an `error` otherwise.
    static DxlDocumentPointer readDocument(const pugi::xml_node& element, Space space,
                                           std::string& error);
    /// `<schema name="N" type="string">default</schema>` for a leaf, or a `<schema name="N">` with
    /// `<branch name="B">` and `<data name="D" type="string">default</data>` below it.
    static std::shared_ptr<const DxlSchema> readSchema(const pugi::xml_node& element,
                                                       std::string& error);
};

}  // namespace vireo
