#pragma once

#include <string>
#include <string_view>

namespace vireo {

/// Checks the raw text of an XML document for what the parser would let pass.
class XmlSource {
public:
    /// False with an `error` that names the place, when `source` holds invalid UTF-8, a character
    /// or character reference that XML cannot carry, an entity that is not predefined, or a
    /// document type.
    static bool check(std::string_view source, std::string& error);
};

}  // namespace vireo
