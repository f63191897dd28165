#include "items/DasResponseParser.h"

#include <expat.h>

#include <cstring>
#include <memory>
#include <utility>

#include "Boundary.h"
#include "data/XmlText.h"

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

bool takeHead(std::string_view& text, std::string_view head) {
    if (!text.starts_with(head)) {
        return false;
    }
    text.remove_prefix(head.size());
    return true;
}

constexpr bool isPlainNameStart(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

constexpr std::array<bool, 0x100> kPlainNameParts = [] {
    std::array<bool, 0x100> parts{};
    for (std::size_t byte = 0; byte < parts.size(); ++byte) {
        const char c = static_cast<char>(byte);
        parts[byte] = isPlainNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
    }
    return parts;
}();

/// Takes an ASCII name; empty when there is none.
std::string_view takeName(std::string_view& text) {
    if (text.empty() || !isPlainNameStart(text.front())) {
        return {};
    }
    std::size_t end = 1;
    while (end < text.size() && kPlainNameParts[static_cast<unsigned char>(text[end])]) {
        ++end;
    }
    const std::string_view name = text.substr(0, end);
    text.remove_prefix(end);
    return name;
}

}  // namespace

bool DasResponseParser::parseXmlResponse(const std::string& response) {
    return parseXmlResponse(std::string(response));
}

bool DasResponseParser::parseXmlResponse(std::string&& response) {
    forget();
    m_response = std::move(response);
    if (takePlainAnswer(m_response)) {
        return true;
    }
    forget();
    return takeAnswer();
}

void DasResponseParser::forget() {
    m_plainCount = 0;
    m_values.clear();
    m_schemaName.clear();
    m_currentText.clear();
    m_failed = false;
}

// Nearly every answer is a schema with some elements of plain text. Making an XML parser for it
// costs more than all else that a read does; whatever is not just so is left to one.
bool DasResponseParser::takePlainAnswer(std::string_view answer) {
    takeHead(answer, R"(<?xml version="1.0" encoding="utf-8"?>)");
    if (!takeHead(answer, "<Schema name=\"")) {
        return false;
    }
    m_schemaName = takeName(answer);
    if (m_schemaName.empty() || !takeHead(answer, "\">")) {
        return false;
    }
    while (answer != "</Schema>") {
        if (!takePlainElement(answer)) {
            return false;
        }
    }
    return true;
}

bool DasResponseParser::takePlainElement(std::string_view& answer) {
    if (!takeHead(answer, "<")) {
        return false;
    }
    const std::string_view name = takeName(answer);
    if (name.empty() || name == kSchemaElement || m_plainCount == m_plain.size() ||
        !takeHead(answer, ">")) {
        return false;
    }
    const std::string_view text = answer.substr(0, answer.find('<'));
    answer.remove_prefix(text.size());
    if (!XmlText::isPlain(text) || !takeHead(answer, "</") || !takeHead(answer, name) ||
        !takeHead(answer, ">")) {
        return false;
    }
    m_plain[m_plainCount++] = {name, text};
    return true;
}

bool DasResponseParser::takeAnswer() {
    const std::unique_ptr<XML_ParserStruct, ParserDeleter> parser(XML_ParserCreate(nullptr));
    if (!parser) {
        return false;
    }
    XML_SetUserData(parser.get(), this);
    XML_SetElementHandler(parser.get(), DasResponseStartElementHandler,
                          DasResponseEndElementHandler);
    XML_SetCharacterDataHandler(parser.get(), DasResponseCharacterDataHandler);
    return XML_Parse(parser.get(), m_response.data(), static_cast<int>(m_response.size()), 1) ==
               XML_STATUS_OK &&
           !m_failed;
}

bool DasResponseParser::getItemValue(const std::string& name, std::string& value) const {
    const auto found = findItemValue(name);
    if (found) {
        value = *found;
    }
    return found.has_value();
}

std::optional<std::string_view> DasResponseParser::findItemValue(std::string_view name) const {
    for (std::size_t i = m_plainCount; i > 0; --i) {  // a later one of the same name counts
        if (m_plain[i - 1].name == name) {
            return m_plain[i - 1].text;
        }
    }
    const auto found = m_values.find(name);
    return found == m_values.end() ? std::nullopt : std::optional<std::string_view>(found->second);
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
