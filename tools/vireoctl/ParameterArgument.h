#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "service/Method.h"

namespace vireo {

/// One `NAME:TYPE=VALUE` of a command line, with TYPE int, bool, string or xml.
class ParameterArgument {
public:
    /// The parameter it stands for: ints and bools travel in; strings and XML in and out, which
    /// serves a method that wants either. A string or XML value is literal and may be empty. None
    /// for a wrong argument; `error` then names it and what is wrong.
    static std::optional<Parameter> parse(std::string_view argument, std::string& error);
};

}  // namespace vireo
