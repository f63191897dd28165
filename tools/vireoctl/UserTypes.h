#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "LocalMgmtIfc.h"

namespace vireo {

/// The users as the service's messages name them.
class UserTypes {
public:
    static const std::vector<std::string>& names();
    /// `USER_BASE` for a name that is not among them, as the service has it.
    static LocalMgmtIfc::eUsertype find(std::string_view name);
};

}  // namespace vireo
