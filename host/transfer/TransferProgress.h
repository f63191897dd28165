#pragma once

#include <algorithm>
#include <cstdint>

#include "device/AdminProgressCallback.h"

namespace vireo {

/// Reports how far a transfer is, 0 to 99, when the percentage has changed.
class TransferProgress {
public:
    explicit TransferProgress(AdminProgressCallback& callback) : m_callback(callback) {}

    /// `total` of 0 or less: nobody knows, and nothing is reported.
    void report(std::uint64_t received, std::int64_t total) {
        if (total <= 0) {
            return;
        }
        const std::uint64_t percent = received * 100 / static_cast<std::uint64_t>(total);
        const int clamped = static_cast<int>(std::min<std::uint64_t>(percent, 99));
        if (clamped != m_last) {
            m_last = clamped;
            m_callback.progressNotify(clamped);
        }
    }

private:
    AdminProgressCallback& m_callback;
    int m_last = -1;
};

}  // namespace vireo
