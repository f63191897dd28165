#pragma once

#include "Visibility.h"

namespace vireo {

/// What the framework can hold, find by name and deliver timers to.
class VIREO_API Executable {
public:
    virtual ~Executable() = default;
    /// A timer of this object fired. Runs on the message thread.
    virtual void timerEvent(int /*timerId*/) {}
};

}  // namespace vireo
