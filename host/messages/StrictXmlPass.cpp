#include "messages/StrictXmlPass.h"

#include <climits>
#include <exception>

namespace vireo {

StrictXmlPass::StrictXmlPass(int depth) : m_parser(XML_ParserCreate("UTF-8")), m_depth(depth) {
    if (m_parser) {
        XML_SetUserData(m_parser.get(), this);
        XML_SetElementHandler(m_parser.get(), &onStart, &onEnd);
        XML_SetCharacterDataHandler(m_parser.get(), &onCharacters);
        XML_SetStartDoctypeDeclHandler(m_parser.get(), &onDocumentType);
    }
}

bool StrictXmlPass::feed(std::string_view piece, bool isLast) {
    return m_parser && piece.size() <= INT_MAX &&
           XML_Parse(m_parser.get(), piece.data(), static_cast<int>(piece.size()),
                     isLast ? XML_TRUE : XML_FALSE) == XML_STATUS_OK;
}

template <class Step>
void StrictXmlPass::handle(void* userData, Step&& step) noexcept {
    auto& pass = *static_cast<StrictXmlPass*>(userData);
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

void StrictXmlPass::onStart(void* userData, const char* name, const char** attributes) {
    handle(userData, [&](StrictXmlPass& pass) {
        return ++pass.m_depth <= kMaximumDepth && pass.start(name, attributes);
    });
}

void StrictXmlPass::onEnd(void* userData, const char* /*name*/) {
    handle(userData, [&](StrictXmlPass& pass) {
        const bool goesOn = pass.end();
        --pass.m_depth;
        return goesOn;
    });
}

void StrictXmlPass::onCharacters(void* userData, const char* text, int length) {
    handle(userData, [&](StrictXmlPass& pass) {
        return pass.characters(std::string_view(text, static_cast<std::size_t>(length)));
    });
}

void StrictXmlPass::onDocumentType(void* userData, const char* /*name*/, const char* /*systemId*/,
                                   const char* /*publicId*/, int /*hasSubset*/) {
    handle(userData, [](StrictXmlPass&) { return false; });
}

}  // namespace vireo
