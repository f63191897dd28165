#pragma once

#include "Visibility.h"

namespace vireo {

/// Who is asked before the phone is shut down in good order. Safe from every thread.
class VIREO_API ShutdownConsentIfc {
public:
    virtual ~ShutdownConsentIfc() = default;
    /// Whether nobody needs the phone now. May wait for a client's answer.
    virtual bool requestShutdown() = 0;
};

}  // namespace vireo
