#pragma once

#include <string_view>

#include "service/Method.h"

namespace vireo {

/// Reads messages of the protocol "vireo_svc_xml". What stands in them comes from anywhere: there
/// is no document type, no entity but the predefined, and no element deeper than 64. One pass over
/// the text, no tree; stateless, safe from every thread.
class XmlMessageReader {
public:
    /// Reads a whole message, in UTF-8 whatever its declaration says. False, and `method`
    /// unchanged, when it is no well-formed XML, or has other elements, attributes, types or
    /// values than a message has.
    static bool read(std::string_view text, Method& method);

    /// Whether `text` can stand between the tags of an XML parameter as it is.
    static bool isFragment(std::string_view text);
};

}  // namespace vireo
