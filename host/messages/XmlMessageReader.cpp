#include "messages/XmlMessageReader.h"

#include <expat.h>

#include <charconv>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "messages/StrictXmlPass.h"

namespace vireo {
namespace {

constexpr int kMessageDepth = 1;
constexpr int kParameterDepth = 2;

std::optional<Parameter::types> findType(std::string_view name) {
    if (name == "int") {
        return Parameter::types::eInt;
    }
    if (name == "string") {
        return Parameter::types::eString;
    }
    if (name == "bool") {
        return Parameter::types::eBool;
    }
    if (name == "xml") {
        return Parameter::types::eXML;
    }
    return std::nullopt;
}

std::optional<Parameter::directions> findDirection(std::string_view digit) {
    if (digit.size() != 1 || digit[0] < '0' || digit[0] > '2') {
        return std::nullopt;
    }
    return static_cast<Parameter::directions>(digit[0] - '0');
}

bool readNumber(std::string_view text, int& number) {
    const char* const last = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), last, number);
    return error == std::errc() && next == last;
}

bool readFlag(std::string_view text, int& number) {
    number = text == "1" || text == "true" ? 1 : 0;
    return number == 1 || text == "0" || text == "false";
}

class MessagePass : public StrictXmlPass {
public:
    explicit MessagePass(std::string_view source) : StrictXmlPass(0), m_source(source) {}

    Method takeMethod() { return std::move(m_method); }

protected:
    bool start(std::string_view name, const char** attributes) override;
    bool end() override;
    bool characters(std::string_view text) override;

private:
    bool startMessage(std::string_view name, const char** attributes);
    bool startParameter(std::string_view name, const char** attributes);
    bool readValue();
    /// How far into the source the parser has come: the start of what it reports now.
    std::size_t position() const;

    const std::string_view m_source;
    Method m_method;
    Parameter m_parameter;           // the one that is open
    std::size_t m_contentStart = 0;  // of its content in the source
};

std::size_t MessagePass::position() const {
    return static_cast<std::size_t>(XML_GetCurrentByteIndex(parser()));
}

bool MessagePass::start(std::string_view name, const char** attributes) {
    switch (depth()) {
        case kMessageDepth:
            return startMessage(name, attributes);
        case kParameterDepth:
            return startParameter(name, attributes);
        default:
            return m_parameter.type == Parameter::types::eXML;
    }
}

bool MessagePass::startMessage(std::string_view name, const char** attributes) {
    if ((name != "request" && name != "response") || attributes[0] == nullptr ||
        std::string_view(attributes[0]) != "name" || attributes[2] != nullptr) {
        return false;
    }
    m_method = Method(attributes[1], name == "request" ? Method::eRequest : Method::eResponse);
    return true;
}

// The parser has seen to it that no attribute is there twice.
bool MessagePass::startParameter(std::string_view name, const char** attributes) {
    const char* parameterName = nullptr;
    std::optional<Parameter::types> type;
    std::optional<Parameter::directions> direction;
    for (; attributes[0] != nullptr; attributes += 2) {
        const std::string_view attribute = attributes[0];
        if (attribute == "name") {
            parameterName = attributes[1];
        } else if (attribute == "type") {
            type = findType(attributes[1]);
        } else if (attribute == "dir") {
            direction = findDirection(attributes[1]);
        } else {
            return false;
        }
    }
    if (name != "param" || parameterName == nullptr || !type || !direction) {
        return false;
    }
    m_parameter = Parameter();
    m_parameter.name = parameterName;
    m_parameter.type = *type;
    m_parameter.direction = *direction;
    m_contentStart = position() + static_cast<std::size_t>(XML_GetCurrentByteCount(parser()));
    return true;
}

bool MessagePass::characters(std::string_view text) {
    if (depth() < kParameterDepth) {
        return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
    }
    if (m_parameter.type != Parameter::types::eXML) {
        m_parameter.text.append(text);
    }
    return true;
}

bool MessagePass::end() {
    if (depth() != kParameterDepth) {
        return true;
    }
    if (!readValue()) {
        return false;
    }
    m_method.addParameter(std::move(m_parameter));
    return true;
}

bool MessagePass::readValue() {
    switch (m_parameter.type) {
        case Parameter::types::eString:
            return true;
        case Parameter::types::eXML:
            // As it stands in the message: whoever wants it gets what was sent.
            m_parameter.text = m_source.substr(m_contentStart, position() - m_contentStart);
            return true;
        case Parameter::types::eInt:
        case Parameter::types::eBool:
            break;
    }
    const std::string text = std::exchange(m_parameter.text, {});
    return m_parameter.type == Parameter::types::eInt ? readNumber(text, m_parameter.number)
                                                      : readFlag(text, m_parameter.number);
}

}  // namespace

bool XmlMessageReader::read(std::string_view text, Method& method) {
    MessagePass pass(text);
    if (!pass.feed(text, true)) {
        return false;
    }
    method = pass.takeMethod();
    return true;
}

bool XmlMessageReader::isFragment(std::string_view text) {
    // The element that is read around it is the parameter's.
    StrictXmlPass pass(kMessageDepth);
    return pass.feed("<param>", false) && pass.feed(text, false) && pass.feed("</param>", true);
}

}  // namespace vireo
