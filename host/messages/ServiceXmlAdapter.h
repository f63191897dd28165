#pragma once

#include <string>
#include <string_view>

#include "service/Method.h"
#include "service/ProtocolAdapter.h"

namespace vireo {

/// The protocol "vireo_svc_xml": a method as one XML document,
///
///   <request name="M"><param name="P" type="int" dir="0">-12</param></request>
///
/// or `<response ...>`. The type is `int`, `string`, `bool` (`1` or `0`) or `xml`, the direction
/// the number of `Parameter::directions`.
///
/// A string keeps every character. XML travels unescaped, as it stands between the tags; text that
/// cannot stand there (it is not well-formed, or nested too deep) is escaped, and comes back
/// escaped.
class ServiceXmlAdapter : public ProtocolAdapter {
public:
    bool encode(const Method& method, std::ostream& out) override;
    bool decode(std::istream& in, Method& method) override;
    bool encodeTo(const Method& method, std::string& out) override;
    bool decodeFrom(std::string_view text, Method& method) override;

    /// The same on plain texts. `encodeText` appends; false, and nothing appended, when a name or
    /// a text holds what XML cannot carry.
    static bool encodeText(const Method& method, std::string& out);
    static bool decodeText(std::string_view text, Method& method);
};

}  // namespace vireo
