#include <sstream>
#include <string>

#include "Fuzz.h"
#include "data/XmlText.h"
#include "messages/ServiceXmlAdapter.h"
#include "messages/XmlMessageReader.h"
#include "service/ClientUtils.h"

namespace vireo::fuzz {
namespace {

bool isSame(const Method& one, const Method& other) {
    const auto& ones = one.parameters();
    const auto& others = other.parameters();
    return one.name() == other.name() && one.type() == other.type() &&
           std::equal(ones.begin(), ones.end(), others.begin(), others.end(),
                      [](const Parameter& a, const Parameter& b) {
                          return a.name == b.name && a.type == b.type &&
                                 a.direction == b.direction && a.number == b.number &&
                                 a.text == b.text;
                      });
}

Method comeBack(const Method& method) {
    std::string text;
    Method again;
    require(ServiceXmlAdapter::encodeText(method, text), "what can be carried is carried");
    require(ServiceXmlAdapter::decodeText(text, again), "what is written can be read");
    return again;
}

void readMessage(std::string_view input) {
    const Method untouched("untouched", Method::eResponse);
    Method method = untouched;
    const bool isMethod = ServiceXmlAdapter::decodeText(input, method);
    std::istringstream in{std::string(input)};
    Method streamed = untouched;
    require(ServiceXmlAdapter().decode(in, streamed) == isMethod && isSame(streamed, method),
            "a stream is read like a text");
    require(isMethod || isSame(method, untouched), "a failure changes nothing");
    if (isMethod) {
        require(isSame(comeBack(method), method), "a method comes back from its text");
    }
}

/// Any text as the value of a string and as XML.
void carryText(std::string_view input) {
    Method method(std::string(input), Method::eResponse);
    method.addStringParameter(input, Parameter::eInOut, std::string(input));
    method.addXMLParameter("xml", Parameter::eOut, std::string(input));
    if (XmlText::findUncarriable(input)) {
        std::string text;
        require(!ServiceXmlAdapter::encodeText(method, text) && text.empty(),
                "what XML cannot carry is refused, and nothing written");
        return;
    }
    const Method again = comeBack(method);
    if (XmlMessageReader::isFragment(input)) {
        require(isSame(again, method), "every text comes back");
    } else {
        std::string escaped;
        XmlText::appendEscaped(escaped, input);
        require(again.name() == input && again.getStringParameter(input, Parameter::eIn) == input &&
                    again.getXMLParameter("xml", Parameter::eOut) == escaped,
                "what is no XML comes back escaped");
    }
}

}  // namespace

void run(std::string_view input) {
    readMessage(input);
    carryText(input);
    ClientUtils::extractValueFromXMLString(std::string(input), "a");
}

}  // namespace vireo::fuzz
