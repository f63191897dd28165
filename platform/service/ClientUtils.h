#pragma once

#include <string>

#include "Visibility.h"

namespace vireo {

/// Small tools for the clients of services. Stateless, safe from every thread.
class VIREO_API ClientUtils {
public:
    /// The unescaped text of the first element called `name` in the XML fragment `xml`, in
    /// document order and at any depth; of an element that holds others, their texts in a row.
    /// Empty when there is no such element or `xml` is malformed.
    static std::string extractValueFromXMLString(const std::string& xml, const std::string& name);
};

}  // namespace vireo
