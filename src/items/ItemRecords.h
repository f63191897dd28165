#pragma once

#include <string>

namespace vireo {

class DxlCollection;
class ItemCatalogue;
class ManageableData;

/// Moves single items between records.
class ItemRecords {
public:
    /// Gives the item's document in `record` its right schema: the record's of the document's name,
    /// else the master collection's of that name, else the item's configured one. A document that a
    /// client made without a schema is laid out by it. Without any schema the document stays.
    /// False when the document is malformed for its schema: not the elements that a branch has.
    static bool adoptSchema(const ItemCatalogue& catalogue, ManageableData& record,
                            const std::string& rootId);

    /// Puts the item's document with its schema from `source` into `target`; the schema of the
    /// target stays if it has it.
    static void copyItem(const ManageableData& source, ManageableData& target,
                         const std::string& rootId);
};

}  // namespace vireo
