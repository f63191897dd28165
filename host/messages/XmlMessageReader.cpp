#include "messages/XmlMessageReader.h"

#include <expat.h>

#include <charconv>
#include <climits>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace vireo {
namespace {

constexpr int kMessageDepth = 1;
constexpr int kParameterDepth = 2;

struct ParserDeleter {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

/// A pass over XML text that stops at the first thing which is not allowed. `depth` counts the
/// elements that are open.
class StrictPass {
public:
    explicit StrictPass(int depth);
    virtual ~StrictPass() = default;
    StrictPass(const StrictPass&) = delete;
    StrictPass& operator=(const StrictPass&) = delete;

    /// Reads the next piece; false when it is malformed or something in it is not allowed.
    bool feed(std::string_view piece, bool isLast);

protected:
    virtual bool start(std::string_view /*name*/, const char** /*attributes*/) { return true; }
    virtual bool end() { return true; }
    virtual bool characters(std::string_view /*text*/) { return true; }

    int depth() const { return m_depth; }
    XML_Parser parser() const { return m_parser.get(); }

private:
    // Nothing may be thrown through the parser's frames.
    template <class Step>
    static void handle(void* userData, Step&& step) noexcept;
    static void onStart(void* userData, const char* name, const char** attributes);
    static void onEnd(void* userData, const char* name);
    static void onCharacters(void* userData, const char* text, int length);
    static void onDocumentType(void* userData, const char* name, const char* systemId,
                               const char* publicId, int hasSubset);

    std::unique_ptr<XML_ParserStruct, ParserDeleter> m_parser;
    int m_depth;
    bool m_stopped = false;
};

StrictPass::StrictPass(int depth) : m_parser(XML_ParserCreate("UTF-8")), m_depth(depth) {
    if (m_parser) {
        XML_SetUserData(m_parser.get(), this);
        XML_SetElementHandler(m_parser.get(), &onStart, &onEnd);
        XML_SetCharacterDataHandler(m_parser.get(), &onCharacters);
        XML_SetStartDoctypeDeclHandler(m_parser.get(), &onDocumentType);
    }
}

bool StrictPass::feed(std::string_view piece, bool isLast) {
    return m_parser && piece.size() <= INT_MAX &&
           XML_Parse(m_parser.get(), piece.data(), static_cast<int>(piece.size()),
                     isLast ? XML_TRUE : XML_FALSE) == XML_STATUS_OK;
}

template <class Step>
void StrictPass::handle(void* userData, Step&& step) noexcept {
    auto& pass = *static_cast<StrictPass*>(userData);
    if (pass.m_stopped) {  // the end of an empty element still comes after its start was refused
        return;
    }
    bool goesOn = false;
    try {
        goesOn = step(pass);
    } catch (const std::exception&) {
        goesOn = false;
    }
    if (!goesOn) {
        pass.m_stopped = true;
        XML_StopParser(pass.m_parser.get(), XML_FALSE);
    }
}

void StrictPass::onStart(void* userData, const char* name, const char** attributes) {
    handle(userData, [&](StrictPass& pass) {
        return ++pass.m_depth <= XmlMessageReader::kMaximumDepth && pass.start(name, attributes);
    });
}

void StrictPass::onEnd(void* userData, const char* /*name*/) {
    handle(userData, [&](StrictPass& pass) {
        const bool goesOn = pass.end();
        --pass.m_depth;
        return goesOn;
    });
}

void StrictPass::onCharacters(void* userData, const char* text, int length) {
    handle(userData, [&](StrictPass& pass) {
        return pass.characters(std::string_view(text, static_cast<std::size_t>(length)));
    });
}

void StrictPass::onDocumentType(void* userData, const char* /*name*/, const char* /*systemId*/,
                                const char* /*publicId*/, int /*hasSubset*/) {
    handle(userData, [](StrictPass&) { return false; });
}

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

class MessagePass : public StrictPass {
public:
    explicit MessagePass(std::string_view source) : StrictPass(0), m_source(source) {}

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
    StrictPass pass(kMessageDepth);
    return pass.feed("<param>", false) && pass.feed(text, false) && pass.feed("</param>", true);
}

}  // namespace vireo
