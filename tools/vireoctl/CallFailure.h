#pragma once

#include <chrono>
#include <string>

#include "ExitCode.h"
#include "LocalMgmtClient.h"

namespace vireo {

/// A call that brought no answer, for the end of the program.
struct CallFailure {
    ExitCode code = ExitCode::eRefused;
    std::string reason;  ///< for a person

    /// `status` is not eDone; `timeout` is that of the client.
    static CallFailure of(const LocalMgmtClient& client, CallStatus status,
                          std::chrono::milliseconds timeout);
};

}  // namespace vireo
