#pragma once

#include "service/Executable.h"

namespace vireo {

class Context;

/// A service object of the framework. The framework creates it through an exported factory, calls
/// `init` once on the start-up thread before any other service calls in, then `run`, and at the end
/// `shutdown` and the destructor.
class VIREO_API Service : public Executable {
public:
    /// Starts the service. `context` outlives it. Failures are logged, not thrown.
    virtual void init(Context& context) = 0;
    virtual void run() = 0;
    virtual void shutdown() = 0;
};

}  // namespace vireo
