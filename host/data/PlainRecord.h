#pragma once

#include <string_view>

namespace vireo {

class ManageableData;

/// Reads the commonest texts of records without an XML parser: those that `RecordText` writes of
/// root ids, schemas and documents which are single leaves, as long as nothing in them has to be
/// escaped. Everything else is left to the full reader. Stateless, safe from every thread.
class PlainRecord {
public:
    /// Reads what the full reader would read. False when the text is of another form, which says
    /// nothing about whether it is well-formed; `record`, which must be empty, is to be thrown away
    /// then.
    static bool read(std::string_view text, ManageableData& record);
};

}  // namespace vireo
