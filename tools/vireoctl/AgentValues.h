#pragma once

#include <functional>
#include <istream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Assignment.h"
#include "data/ManageableData.h"

namespace vireo {

/// The values that an agent keeps for its items: those that it begins with, and those that were
/// written. In memory alone.
class AgentValues {
public:
    /// Puts the schema of an item into the record, if it is not there, and gives its name; empty
    /// when it cannot be found.
    using SchemaFinder = std::function<std::string(const std::string& tag, ManageableData& record)>;

    AgentValues(std::vector<Assignment> initial, SchemaFinder findSchema);

    /// Reads lines `tag=value`. Empty lines and those that start with '#' are skipped. None when a
    /// line is something else or names a tag again; `error` then names the line.
    static std::optional<std::vector<Assignment>> parse(std::istream& lines, std::string& error);

    /// Fills in every item of the record: the document that was written last, else the value that
    /// it began with, else what its schema has; empty without a schema.
    void fill(ManageableData& record);
    /// Keeps the document of the item in the record. False when there is none.
    bool keep(const ManageableData& record, const std::string& tag);
    /// Gives the item a value and lists it in `record` with its document. False, and no change,
    /// when it cannot have the value.
    bool change(const Assignment& assignment, ManageableData& record);
    /// Goes back to the values that it began with.
    void reset();

private:
    struct Kept {
        DxlDocumentPointer document;
        std::shared_ptr<const DxlSchema> schema;  // may be null
    };

    bool begin(ManageableData& record, const std::string& tag);
    bool putKept(ManageableData& record, const std::string& tag) const;

    const std::map<std::string, std::string> m_initial;
    const SchemaFinder m_findSchema;
    std::map<std::string, Kept> m_kept;
};

}  // namespace vireo
