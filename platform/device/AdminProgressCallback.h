#pragma once

#include "Visibility.h"

namespace vireo {

/// Who is told how a transfer or a burn goes on. Called on a thread of the platform, one call at a
/// time; it may call back into the platform. Must not throw.
class VIREO_API AdminProgressCallback {
public:
    virtual ~AdminProgressCallback() = default;
    /// `percent` is 0 to 99 while the work goes on. The last call of a transfer is 100 when the
    /// file is in its place, or a negative number when it failed; the last call of a burn is 99, or
    /// negative. The answer says whether the report was of use.
    virtual bool progressNotify(int percent) = 0;
};

}  // namespace vireo
