#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "LocalMgmtIfc.h"

namespace vireo {

/// The file types under their names in messages, which are also those that a person types. The
/// service takes any other name for software without a word.
class FileTypes {
public:
    static const std::vector<std::string>& names();
    /// FILETYPE_INVALID for an unknown name.
    static LocalMgmtIfc::eFiletype find(std::string_view name);
};

}  // namespace vireo
