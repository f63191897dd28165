#pragma once

namespace vireo {

/// How patient the store is.
struct StoreOptions {
    /// How long a write waits for another program that uses the file.
    int busyTimeoutMs = 1000;
    /// How long after an attempt to open the store the next one may follow.
    int retryIntervalMs = 1000;
};

}  // namespace vireo
