#pragma once

#include <string>

#include "Visibility.h"

namespace vireo {

/// The phone's passwords. Found through the context under "PasswordMgmtSvcIfc"; the implementation
/// is also an `Executable`. Safe from every thread. Throws nothing.
class VIREO_API PasswordMgmtSvcIfc {
public:
    /// Which password is meant. Only one kind is told apart.
    static constexpr int kFactoryReset = 3;

    virtual ~PasswordMgmtSvcIfc() = default;
    /// Deliberate: 0 when the password is accepted, another number when it is refused. It is also
    /// refused while no password of the kind is set, and for a while after wrong ones. May take as
    /// long as a slow hash takes, never as long as the wait after wrong ones.
    virtual int verifyPassword(int kind, const std::string& password) = 0;
};

}  // namespace vireo
