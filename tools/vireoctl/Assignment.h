#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vireo {

/// One `TAG=VALUE` of a command line.
struct Assignment {
    std::string tag;
    std::string value;

    /// Splits at the first '='; the value is literal and may be empty. None when there is no '='
    /// or nothing before it; `error` then names the argument.
    static std::optional<Assignment> parse(std::string_view argument, std::string& error);
    /// All of them, in order. None at the first that is wrong or names a tag again.
    static std::optional<std::vector<Assignment>> parseAll(
        const std::vector<std::string>& arguments, std::string& error);
};

}  // namespace vireo
