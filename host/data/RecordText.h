#pragma once

#include <string>

#include "data/ManageableData.h"

namespace vireo {

/// The text form of a record:
///
///   <record single="1">
///     <rootId>ringer-melody</rootId>
///     <schema name="..." type="string">...</schema>
///     <document name="ringer-melody" schema="...">...</document>
///     <refusal rootId="..." path="//*" reason="..."/>
///   </record>
///
/// without the line ends and blanks shown here: every blank is content. `single` stands only on a
/// record that was made for one item. A root id with a companion has it as attribute `with`.
class RecordText {
public:
    static std::string write(const ManageableData& record, ManageableData::serializationType type);
    static void append(std::string& out, const ManageableData& record,
                       ManageableData::serializationType type);
    /// False on malformed text; `record`, which must be empty, is to be thrown away then.
    static bool read(const std::string& text, ManageableData& record, std::string& error);
    /// The same without the short way for plain records.
    static bool readAny(const std::string& text, ManageableData& record, std::string& error);

private:
    static void appendDocuments(std::string& out, const ManageableData& record);
};

}  // namespace vireo
