#pragma once

#include "Visibility.h"

namespace vireo {

/// The phone's instrumentation. Found through the context under "InstrumentationServicePrivateIfc";
/// the implementation is also an `Executable`. Nothing of it is called yet.
class VIREO_API InstrumentationServicePrivateIfc {
public:
    virtual ~InstrumentationServicePrivateIfc() = default;
};

}  // namespace vireo
