#include <expat.h>

#include <cstring>
#include <memory>
#include <string>

#include "Fuzz.h"
#include "data/XmlText.h"

namespace vireo::fuzz {
namespace {

/// What another reader makes of `<name a="...">...</name>`.
struct Element {
    std::string attribute;
    std::string text;
};

void onStart(void* element, const char* /*name*/, const char** attributes) {
    if (attributes[0] != nullptr) {
        static_cast<Element*>(element)->attribute = attributes[1];
    }
}

void onText(void* element, const char* text, int length) {
    static_cast<Element*>(element)->text.append(text, static_cast<std::size_t>(length));
}

bool parse(const std::string& source, Element& element) {
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate("UTF-8"), XML_ParserFree);
    XML_SetUserData(parser.get(), &element);
    XML_SetElementHandler(parser.get(), onStart, nullptr);
    XML_SetCharacterDataHandler(parser.get(), onText);
    return XML_Parse(parser.get(), source.data(), static_cast<int>(source.size()), 1) ==
           XML_STATUS_OK;
}

}  // namespace

void run(std::string_view input) {
    std::string source = "<e a=\"";
    XmlText::appendEscapedAttribute(source, input);
    source += "\">";
    XmlText::appendEscaped(source, input);
    source += "</e>";
    Element element;
    require(parse(source, element) == !XmlText::findUncarriable(input),
            "what can be carried is what a conforming reader takes");
    if (!XmlText::findUncarriable(input)) {
        require(element.text == input && element.attribute == input, "every byte comes back");
    }
    // The other reader knows the names of an older edition: fewer, but none that is none today.
    const bool isPlain = input.find_first_of(" \t\r\n/>=:") == std::string_view::npos;
    if (isPlain && parse("<" + std::string(input) + "/>", element)) {
        require(XmlText::isName(input), "what stands as a name is one");
    }
    require(!XmlText::isName(input) || !XmlText::findUncarriable(input), "names can be carried");
}

}  // namespace vireo::fuzz
