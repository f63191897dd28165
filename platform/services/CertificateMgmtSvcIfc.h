#pragma once

#include "Visibility.h"

namespace vireo {

/// The phone's certificate store. Found through the context under "CertificateMgmtSvcIfc"; the
/// implementation is also an `Executable`. Nothing of it is called yet.
class VIREO_API CertificateMgmtSvcIfc {
public:
    virtual ~CertificateMgmtSvcIfc() = default;
};

}  // namespace vireo
