#pragma once

#include <atomic>

namespace vireo {

/// Why transfers end before their time. Set by other threads, which then wake the transfer up.
struct TransferStops {
    std::atomic<bool> isStopping{false};  ///< the service ends
    /// The directory of the file is being cleared. Set under `namesLock`, so that afterwards the
    /// file either has its name or never gets it.
    std::atomic<bool> isDiscarded{false};
};

}  // namespace vireo
