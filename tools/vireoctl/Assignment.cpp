#include "Assignment.h"

#include <unordered_set>
#include <utility>

namespace vireo {

std::optional<Assignment> Assignment::parse(std::string_view argument, std::string& error) {
    const std::size_t equals = argument.find('=');
    if (equals == std::string_view::npos || equals == 0) {
        error = "'" + std::string(argument) + "' is not TAG=VALUE";
        return std::nullopt;
    }
    return Assignment{std::string(argument.substr(0, equals)),
                      std::string(argument.substr(equals + 1))};
}

std::optional<std::vector<Assignment>> Assignment::parseAll(
    const std::vector<std::string>& arguments, std::string& error) {
    std::vector<Assignment> assignments;
    std::unordered_set<std::string> seen;
    for (const std::string& argument : arguments) {
        std::optional<Assignment> assignment = parse(argument, error);
        if (!assignment) {
            return std::nullopt;
        }
        if (!seen.insert(assignment->tag).second) {
            error = "'" + assignment->tag + "' is given twice";
            return std::nullopt;
        }
        assignments.push_back(std::move(*assignment));
    }
    return assignments;
}

}  // namespace vireo
