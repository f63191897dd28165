#pragma once

#include <map>
#include <string>
#include <string_view>

namespace vireo {

/// Reads one answer of the persistent store. One per request, on the caller's stack.
class DasResponseParser {
public:
    virtual ~DasResponseParser() = default;

    /// Parses a whole answer; false when it is malformed.
    virtual bool parseXmlResponse(const std::string& response);
    /// The text of the element `name`; false when the answer has none, `value` is unchanged then.
    virtual bool getItemValue(const std::string& name, std::string& value) const;
    /// The "name" attribute of the answer's "Schema" element.
    const std::string& schemaName() const { return m_schemaName; }

    void startElementHandler(const char* name, const char** attributes);
    void endElementHandler(const char* name);
    void characterDataHandler(const char* text, int length);
    /// The answer could not be taken in; `parseXmlResponse` answers false.
    void fail() { m_failed = true; }

private:
    bool takePlainAnswer(std::string_view answer);
    bool takePlainElement(std::string_view& answer);
    bool takeAnswer(const std::string& response);
    void forget();

    std::string m_currentText;
    std::string m_schemaName;
    std::map<std::string, std::string> m_values;
    bool m_failed = false;
};

}  // namespace vireo
