#pragma once

#include <string>
#include <vector>

namespace vireo {

class DxlCollection;
class ItemCatalogue;
class ManageableData;

/// Moves single items between records.
class ItemRecords {
public:
    /// Gives the item's document in `record` the item's configured schema; when there is none, the
    /// record's or the master collection's of the document's name. A document that a client made
    /// without a schema is laid out by it. Without any schema the document stays. False when the
    /// document does not have the parts that the schema names.
    static bool adoptSchema(const ItemCatalogue& catalogue, ManageableData& record,
                            const std::string& rootId);

    /// Puts the item's document with its schema from `source` into `target`; the schema of the
    /// target stays if it has it.
    static void copyItem(const ManageableData& source, ManageableData& target,
                         const std::string& rootId);
    /// Appends to `target` the refusals that an owner gave for the items that it was sent. False,
    /// and nothing appended, when there are none.
    static bool takeRefusals(const ManageableData& answer, const std::vector<std::string>& sent,
                             ManageableData& target);
    /// Adds the refusal of a whole item.
    static void refuse(ManageableData& record, const std::string& rootId,
                       const std::string& reason);
    /// Puts an owner's answer for the item into `target`. The schema of its document is the one in
    /// `master`; the owner's where that has none and the target has not got one of the name yet.
    /// Whatever else the owner sent stays out.
    static void takeItem(const ManageableData& answer, const DxlCollection& master,
                         ManageableData& target, const std::string& rootId);
    /// The same as `copyItem` for those of the items that `source` has.
    static void copyItems(const ManageableData& source, ManageableData& target,
                          const std::vector<std::string>& rootIds);
};

}  // namespace vireo
