#pragma once

#include "Visibility.h"
#include "device/TransferRequest.h"

namespace vireo {

/// The phone's certificate store. Found through the context under "CertificateMgmtSvcIfc"; the
/// implementation is also an `Executable`. Safe from every thread. Throws nothing.
class VIREO_API CertificateMgmtSvcIfc {
public:
    virtual ~CertificateMgmtSvcIfc() = default;
    /// Replaces `details` by what holds now. False, and no change, when the store cannot be read.
    virtual bool getSecurityDetails(SecurityDetails& details) = 0;
};

}  // namespace vireo
