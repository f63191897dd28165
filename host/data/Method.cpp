#include "service/Method.h"

#include <utility>

namespace vireo {

const char* Parameter::nameOf(types type) {
    switch (type) {
        case types::eInt:
            return "int";
        case types::eString:
            return "string";
        case types::eBool:
            return "bool";
        case types::eXML:
            return "xml";
    }
    return "unknown";
}

namespace {

bool travels(Parameter::directions actual, Parameter::directions wanted) {
    if (actual == wanted || actual == Parameter::eInOut) {
        return true;
    }
    return wanted == Parameter::eInOut && actual == Parameter::eIn;
}

Parameter makeParameter(std::string_view name, Parameter::types type,
                        Parameter::directions direction, int number, std::string text) {
    Parameter parameter;
    parameter.name = name;
    parameter.type = type;
    parameter.direction = direction;
    parameter.number = number;
    parameter.text = std::move(text);
    return parameter;
}

}  // namespace

void Method::addIntParameter(std::string_view name, Parameter::directions direction, int value) {
    addParameter(makeParameter(name, Parameter::types::eInt, direction, value, {}));
}

void Method::addBoolParameter(std::string_view name, Parameter::directions direction, bool value) {
    addParameter(makeParameter(name, Parameter::types::eBool, direction, value ? 1 : 0, {}));
}

void Method::addStringParameter(std::string_view name, Parameter::directions direction,
                                std::string value) {
    addParameter(makeParameter(name, Parameter::types::eString, direction, 0, std::move(value)));
}

void Method::addXMLParameter(std::string_view name, Parameter::directions direction,
                             std::string xml) {
    addParameter(makeParameter(name, Parameter::types::eXML, direction, 0, std::move(xml)));
}

const Parameter& Method::find(std::string_view name, Parameter::types type,
                              Parameter::directions direction) const {
    for (const Parameter& parameter : m_parameters) {  // a method has a handful
        if (parameter.name != name) {
            continue;
        }
        if (parameter.type != type || !travels(parameter.direction, direction)) {
            throw MethodError("method \"" + m_name + "\": parameter \"" + std::string(name) +
                              "\" is " + Parameter::nameOf(parameter.type) + " in direction " +
                              std::to_string(parameter.direction) + ", wanted " +
                              Parameter::nameOf(type) + " in direction " +
                              std::to_string(direction));
        }
        return parameter;
    }
    throw MethodError("method \"" + m_name + "\": parameter \"" + std::string(name) +
                      "\" is missing");
}

int Method::getIntParameter(std::string_view name, Parameter::directions direction) const {
    return find(name, Parameter::types::eInt, direction).number;
}

bool Method::getBoolParameter(std::string_view name, Parameter::directions direction) const {
    return find(name, Parameter::types::eBool, direction).number != 0;
}

const std::string& Method::getStringParameter(std::string_view name,
                                              Parameter::directions direction) const {
    return find(name, Parameter::types::eString, direction).text;
}

const std::string& Method::getXMLParameter(std::string_view name,
                                           Parameter::directions direction) const {
    return find(name, Parameter::types::eXML, direction).text;
}

}  // namespace vireo
