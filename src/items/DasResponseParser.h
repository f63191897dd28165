#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vireo {

/// Reads one answer of the persistent store. One per request, on the caller's stack.
class DasResponseParser {
public:
    DasResponseParser() = default;
    DasResponseParser(const DasResponseParser&) = delete;  // it points into itself
    DasResponseParser& operator=(const DasResponseParser&) = delete;
    virtual ~DasResponseParser() = default;

    /// Parses a whole answer; false when it is malformed.
    virtual bool parseXmlResponse(const std::string& response);
    /// The same on an answer that is given away: its text is not copied.
    bool parseXmlResponse(std::string&& response);
    /// The text of the element `name`; false when the answer has none, `value` is unchanged then.
    virtual bool getItemValue(const std::string& name, std::string& value) const;
    /// The same without a copy: what is pointed to lives until the next answer is parsed.
    std::optional<std::string_view> findItemValue(std::string_view name) const;
    /// The "name" attribute of the answer's "Schema" element.
    const std::string& schemaName() const { return m_schemaName; }

    void startElementHandler(const char* name, const char** attributes);
    void endElementHandler(const char* name);
    void characterDataHandler(const char* text, int length);
    /// The answer could not be taken in; `parseXmlResponse` answers false.
    void fail() { m_failed = true; }

private:
    /// An element of a plain answer; parts of `m_response`.
    struct PlainElement {
        std::string_view name;
        std::string_view text;
    };

    bool takePlainAnswer(std::string_view answer);
    bool takePlainElement(std::string_view& answer);
    bool takeAnswer();
    void forget();

    std::string m_response;
    std::string m_currentText;
    std::string m_schemaName;
    std::array<PlainElement, 4> m_plain;  ///< more are left to the XML parser
    std::size_t m_plainCount = 0;
    std::map<std::string, std::string, std::less<>> m_values;  ///< of any other answer
    bool m_failed = false;
};

}  // namespace vireo
