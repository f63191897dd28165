#include "items/DasResponseParser.h"

#include <expat.h>

#include <cstring>
#include <memory>

#include "Boundary.h"

namespace vireo {
namespace {

constexpr const char* kSchemaElement = "Schema";

/// Nothing may be thrown through the parser's frames.
template <class Call>
void handle(void* userData, Call&& call) noexcept {
    auto* parser = static_cast<DasResponseParser*>(userData);
    const bool handled = guarded("answer of the persistent store", false, [&] {
        call(*parser);
        return true;
    });
    if (!handled) {
        parser->fail();
    }
}

void DasResponseStartElementHandler(void* userData, const char* name, const char** attributes) {
    handle(userData,
           [&](DasResponseParser& parser) { parser.startElementHandler(name, attributes); });
}

void DasResponseEndElementHandler(void* userData, const char* name) {
    handle(userData, [&](DasResponseParser& parser) { parser.endElementHandler(name); });
}

void DasResponseCharacterDataHandler(void* userData, const char* text, int length) {
    handle(userData, [&](DasResponseParser& parser) { parser.characterDataHandler(text, length); });
}

struct ParserDeleter {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

}  // namespace

bool DasResponseParser::parseXmlResponse(const std::string& response) {
    const std::unique_ptr<XML_ParserStruct, ParserDeleter> parser(XML_ParserCreate(nullptr));
    if (!parser) {
        return false;
    }
    XML_SetUserData(parser.get(), this);
    XML_SetElementHandler(parser.get(), DasResponseStartElementHandler,
                          DasResponseEndElementHandler);
    XML_SetCharacterDataHandler(parser.get(), DasResponseCharacterDataHandler);
    m_values.clear();
    m_schemaName.clear();
    m_failed = false;
    return XML_Parse(parser.get(), response.data(), static_cast<int>(response.size()), 1) ==
               XML_STATUS_OK &&
           !m_failed;
}

bool DasResponseParser::getItemValue(const std::string& name, std::string& value) const {
    const auto found = m_values.find(name);
    if (found == m_values.end()) {
        return false;
    }
    value = found->second;
    return true;
}

void DasResponseParser::startElementHandler(const char* name, const char** attributes) {
    m_currentText.clear();
    if (std::strcmp(name, kSchemaElement) != 0) {
        return;
    }
    for (const char** attribute = attributes; attribute[0] != nullptr; attribute += 2) {
        if (std::strcmp(attribute[0], "name") == 0) {
            m_schemaName = attribute[1];
        }
    }
}

void DasResponseParser::endElementHandler(const char* name) {
    if (std::strcmp(name, kSchemaElement) != 0) {
        m_values[name] = m_currentText;
    }
}

void DasResponseParser::characterDataHandler(const char* text, int length) {
    m_currentText.append(text, static_cast<std::size_t>(length));
}

}  // namespace vireo
