#pragma once

#include "Visibility.h"

namespace vireo {

/// The phone's network and other hardware interfaces. Found through the context under
/// "PhysicalInterfaceServiceIfc"; the implementation is also an `Executable`. Nothing of it is
/// called yet.
class VIREO_API PhysicalInterfaceServiceIfc {
public:
    virtual ~PhysicalInterfaceServiceIfc() = default;
};

}  // namespace vireo
