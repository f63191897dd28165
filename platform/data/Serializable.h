#pragma once

#include <string>

#include "Visibility.h"

namespace vireo {

/// What has a text form that travels over messages.
class VIREO_API Serializable {
public:
    virtual ~Serializable() = default;
    virtual std::string serialize() const = 0;
    /// False on malformed text; the object is unchanged then.
    virtual bool deserialize(const std::string& text) = 0;
};

}  // namespace vireo
