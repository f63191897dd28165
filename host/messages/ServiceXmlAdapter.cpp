#include "messages/ServiceXmlAdapter.h"

#include <charconv>

#include "data/XmlText.h"
#include "messages/StreamText.h"
#include "messages/XmlMessageReader.h"

namespace vireo {
namespace {

// Room for the tags and the value of a parameter beside its texts.
constexpr std::size_t kTagRoom = 64;

void appendNumber(std::string& out, int value) {
    char digits[16];
    out.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

void appendValue(std::string& out, const Parameter& parameter) {
    switch (parameter.type) {
        case Parameter::types::eInt:
            appendNumber(out, parameter.number);
            break;
        case Parameter::types::eBool:
            out.push_back(parameter.number != 0 ? '1' : '0');
            break;
        case Parameter::types::eString:
            XmlText::appendEscaped(out, parameter.text);
            break;
        case Parameter::types::eXML:
            if (XmlMessageReader::isFragment(parameter.text)) {
                out.append(parameter.text);
            } else {
                XmlText::appendEscaped(out, parameter.text);
            }
            break;
    }
}

void appendParameter(std::string& out, const Parameter& parameter) {
    out.append("<param name=\"");
    XmlText::appendEscapedAttribute(out, parameter.name);
    out.append("\" type=\"").append(Parameter::nameOf(parameter.type)).append("\" dir=\"");
    appendNumber(out, parameter.direction);
    out.append("\">");
    appendValue(out, parameter);
    out.append("</param>");
}

/// Whether XML can carry every text of the method; `size` becomes about what they need.
bool isCarriable(const Method& method, std::size_t& size) {
    size = method.name().size() + kTagRoom;
    if (XmlText::findUncarriable(method.name())) {
        return false;
    }
    for (const Parameter& parameter : method.parameters()) {
        if (XmlText::findUncarriable(parameter.name) || XmlText::findUncarriable(parameter.text)) {
            return false;
        }
        size += parameter.name.size() + parameter.text.size() + kTagRoom;
    }
    return true;
}

}  // namespace

bool ServiceXmlAdapter::encodeText(const Method& method, std::string& out) {
    std::size_t size = 0;
    if (!isCarriable(method, size)) {
        return false;
    }
    const char* const element = method.type() == Method::eRequest ? "request" : "response";
    out.reserve(out.size() + size);
    out.append(1, '<').append(element).append(" name=\"");
    XmlText::appendEscapedAttribute(out, method.name());
    out.append("\">");
    for (const Parameter& parameter : method.parameters()) {
        appendParameter(out, parameter);
    }
    out.append("</").append(element).append(1, '>');
    return true;
}

bool ServiceXmlAdapter::decodeText(std::string_view text, Method& method) {
    return XmlMessageReader::read(text, method);
}

bool ServiceXmlAdapter::encode(const Method& method, std::ostream& out) {
    std::string text;
    if (!encodeText(method, text)) {
        return false;
    }
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    return out.good();
}

bool ServiceXmlAdapter::decode(std::istream& in, Method& method) {
    return decodeText(StreamText::takeAll(in), method);
}

bool ServiceXmlAdapter::encodeTo(const Method& method, std::string& out) {
    return encodeText(method, out);
}

bool ServiceXmlAdapter::decodeFrom(std::string_view text, Method& method) {
    return decodeText(text, method);
}

}  // namespace vireo
