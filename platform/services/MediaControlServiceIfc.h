#pragma once

#include "Visibility.h"

namespace vireo {

/// The phone's media control. Found through the context under "MediaControlServiceIfc"; the
/// implementation is also an `Executable`. Nothing of it is called yet.
class VIREO_API MediaControlServiceIfc {
public:
    virtual ~MediaControlServiceIfc() = default;
};

}  // namespace vireo
