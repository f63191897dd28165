#pragma once

#include "Visibility.h"

namespace vireo {

/// Users who move between phones. Found through the context under "MobilityServiceIfc"; the
/// implementation is also an `Executable`. Nothing of it is called yet.
class VIREO_API MobilityServiceIfc {
public:
    virtual ~MobilityServiceIfc() = default;
};

}  // namespace vireo
