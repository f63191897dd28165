#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Visibility.h"

namespace vireo {

/// A parameter that is missing, or has another type or direction than the reader wants.
/// `what()` names the method, the parameter and what was wrong.
class VIREO_API MethodError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One typed, named argument of a `Method`.
struct VIREO_API Parameter {
    enum class types { eInt = 0, eString = 1, eBool = 2, eXML = 3 };
    enum directions { eIn = 0, eOut = 1, eInOut = 2 };

    /// "int", "string", "bool" or "xml".
    static const char* nameOf(types type);

    std::string name;
    types type = types::eString;
    directions direction = eIn;
    int number = 0;    ///< the value of an int, and of a bool as 0 or 1
    std::string text;  ///< the value of a string, and of XML as inner XML
};

/// A request or a response: a name and typed named parameters, in order. A value type; one
/// instance is used by one thread at a time.
///
/// The getters throw `MethodError`. A parameter can be read as `direction` when it travels that
/// way: an in/out parameter serves a reader of either direction, and a plain in parameter serves a
/// reader of in/out. When a name occurs twice the first counts.
class VIREO_API Method {
public:
    enum methodTypes { eRequest = 0, eResponse = 1 };

    Method() = default;
    Method(std::string name, methodTypes type) : m_name(std::move(name)), m_type(type) {}

    const std::string& name() const { return m_name; }
    methodTypes type() const { return m_type; }
    const std::vector<Parameter>& parameters() const { return m_parameters; }

    /// Makes room for `count` parameters, so that adding them moves none.
    void reserveParameters(std::size_t count) { m_parameters.reserve(count); }
    void addParameter(Parameter parameter) { m_parameters.push_back(std::move(parameter)); }
    void addIntParameter(std::string_view name, Parameter::directions direction, int value);
    void addBoolParameter(std::string_view name, Parameter::directions direction, bool value);
    void addStringParameter(std::string_view name, Parameter::directions direction,
                            std::string value);
    /// `xml` is inner XML and travels unescaped where the protocol allows it.
    void addXMLParameter(std::string_view name, Parameter::directions direction, std::string xml);

    int getIntParameter(std::string_view name, Parameter::directions direction) const;
    bool getBoolParameter(std::string_view name, Parameter::directions direction) const;
    const std::string& getStringParameter(std::string_view name,
                                          Parameter::directions direction) const;
    const std::string& getXMLParameter(std::string_view name,
                                       Parameter::directions direction) const;

private:
    const Parameter& find(std::string_view name, Parameter::types type,
                          Parameter::directions direction) const;

    std::string m_name;
    methodTypes m_type = eRequest;
    std::vector<Parameter> m_parameters;
};

}  // namespace vireo
