#pragma once

#include <string>

#include "Visibility.h"

namespace vireo {

/// What phone this is. Safe from every thread.
class VIREO_API HardwareVersion {
public:
    /// The variant that software images are made for; empty without an image port.
    static std::string getHWVariant();
};

}  // namespace vireo
