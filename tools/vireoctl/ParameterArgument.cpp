#include "ParameterArgument.h"

#include <charconv>
#include <system_error>

namespace vireo {
namespace {

struct TypeName {
    std::string_view name;
    Parameter::types type;
    Parameter::directions direction;
};

constexpr TypeName kTypes[] = {
    {"int", Parameter::types::eInt, Parameter::eIn},
    {"bool", Parameter::types::eBool, Parameter::eIn},
    {"string", Parameter::types::eString, Parameter::eInOut},
    {"xml", Parameter::types::eXML, Parameter::eInOut},
};

const TypeName* findType(std::string_view name) {
    for (const TypeName& type : kTypes) {
        if (type.name == name) {
            return &type;
        }
    }
    return nullptr;
}

std::string quoted(std::string_view text) {
    return "'" + std::string(text) + "'";
}

bool readInt(std::string_view text, int& number, std::string& error) {
    const char* const end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, number);
    if (failure == std::errc::result_out_of_range && stop == end) {
        error = quoted(text) + " is out of the range of an int";
        return false;
    }
    if (failure != std::errc() || stop != end) {
        error = quoted(text) + " is not a whole number";
        return false;
    }
    return true;
}

bool readBool(std::string_view text, int& number, std::string& error) {
    const bool isTrue = text == "true" || text == "1";
    if (!isTrue && text != "false" && text != "0") {
        error = quoted(text) + " is not true, false, 1 or 0";
        return false;
    }
    number = isTrue ? 1 : 0;
    return true;
}

bool readValue(std::string_view text, Parameter& parameter, std::string& error) {
    switch (parameter.type) {
        case Parameter::types::eInt:
            return readInt(text, parameter.number, error);
        case Parameter::types::eBool:
            return readBool(text, parameter.number, error);
        case Parameter::types::eString:
        case Parameter::types::eXML:
            parameter.text = text;
            return true;
    }
    return false;
}

}  // namespace

std::optional<Parameter> ParameterArgument::parse(std::string_view argument, std::string& error) {
    const std::size_t colon = argument.find(':');
    const std::size_t equals = argument.find('=', colon == std::string_view::npos ? 0 : colon);
    if (colon == std::string_view::npos || equals == std::string_view::npos || colon == 0 ||
        argument.find('=') < colon) {
        error = quoted(argument) + " is not NAME:TYPE=VALUE";
        return std::nullopt;
    }
    const std::string_view typeName = argument.substr(colon + 1, equals - colon - 1);
    const TypeName* const type = findType(typeName);
    if (type == nullptr) {
        error = quoted(argument) + ": " + quoted(typeName) +
                " is not a type (int, bool, string or xml)";
        return std::nullopt;
    }
    Parameter parameter;
    parameter.name = argument.substr(0, colon);
    parameter.type = type->type;
    parameter.direction = type->direction;
    std::string cause;
    if (!readValue(argument.substr(equals + 1), parameter, cause)) {
        error = quoted(argument) + ": " + cause;
        return std::nullopt;
    }
    return parameter;
}

}  // namespace vireo
