#pragma once

#include <optional>
#include <string>

namespace vireo {

class LocalMgmtIfc;

/// Values of the items about traps. They are read as a record, so that the value cache never
/// answers: the next trap goes where the items say now.
class TrapItem {
public:
    /// Nothing when it cannot be read. `service` may be null.
    static std::optional<std::string> read(LocalMgmtIfc* service, const char* tag);
    /// The empty text when it cannot be read, with an error line.
    static std::string getValueFromVCMS(LocalMgmtIfc* service, const char* tag);
};

}  // namespace vireo
