#pragma once

#include <string>

namespace vireo {

class ManageableData;
class Method;

/// The parameter "manageableData": a record as text.
class RecordParameter {
public:
    /// Reads the record of a request. False when it is malformed: what it would have asked for
    /// cannot be told.
    static bool read(const Method& request, ManageableData& record);
    /// The same for a record whose values are to be kept or passed on: false also when it is too
    /// long for that.
    static bool readToKeep(const Method& request, const std::string& protocol,
                           ManageableData& record);
    /// Adds "result" and the record to a reply. A record that is too long for an answer is replaced
    /// by a refusal, and the result is false then.
    static void addWithResult(Method& reply, const std::string& protocol, bool result,
                              const ManageableData& record);
    /// Adds the record alone.
    static void add(Method& reply, const ManageableData& record);
    /// Makes `record` say that nothing of the request was done.
    static void becomeRefusal(ManageableData& record, const char* reason);
};

}  // namespace vireo
