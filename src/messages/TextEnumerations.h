#pragma once

#include <string>

#include "LocalMgmtIfc.h"

namespace vireo {

/// The file type of that name. A name that is unknown stands for the software image.
LocalMgmtIfc::eFiletype convertXMLStringToFileTypeEnum(const std::string& name);
/// The user type of that name, compared exactly. A name that is unknown stands for the base user.
LocalMgmtIfc::eUsertype convertStringToUserTypeEnum(const std::string& name);

}  // namespace vireo
