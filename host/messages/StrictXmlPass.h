#pragma once

#include <expat.h>

#include <memory>
#include <string_view>

namespace vireo {

/// A pass over XML text that stops at the first thing which is not allowed. `depth` counts the
/// elements that are open.
class StrictXmlPass {
public:
    /// Elements that are open at a time, around the text and in it.
    static constexpr int kMaximumDepth = 64;

    explicit StrictXmlPass(int depth);
    virtual ~StrictXmlPass() = default;
    StrictXmlPass(const StrictXmlPass&) = delete;
    StrictXmlPass& operator=(const StrictXmlPass&) = delete;

    /// Reads the next piece; false when it is malformed or something in it is not allowed.
    bool feed(std::string_view piece, bool isLast);

protected:
    virtual bool start(std::string_view /*name*/, const char** /*attributes*/) { return true; }
    virtual bool end() { return true; }
    virtual bool characters(std::string_view /*text*/) { return true; }

    int depth() const { return m_depth; }
    XML_Parser parser() const { return m_parser.get(); }

private:
    struct ParserDeleter {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };

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

}  // namespace vireo
