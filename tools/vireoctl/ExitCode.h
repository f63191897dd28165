#pragma once

namespace vireo {

/// What the program ends with.
enum class ExitCode {
    eDone = 0,
    eRefused = 1,     ///< refused or failed
    eUsage = 2,       ///< the command line is wrong
    eNotReached = 3,  ///< the service is not reached, or gives no answer in time
};

}  // namespace vireo
