#pragma once

#include <string>

#include "Visibility.h"

namespace vireo {

/// The phone's persistent store. Found through the context under "DataAccessServiceIfc"; the
/// implementation is also an `Executable`. Safe from every thread. Never throws, never calls back.
class VIREO_API DataAccessServiceIfc {
public:
    virtual ~DataAccessServiceIfc() = default;

    /// Carries out one request text and answers with the response text.
    ///
    /// A read is answered with reason "read_response" and an element named like the column; the
    /// element is left out when the store has no row or no value, and is empty for an empty text.
    /// An update is answered with reason "update_response". Whatever the store does not know or
    /// cannot do is answered with reason "error_response" and an element "Error" that says why.
    /// Values inside requests are taken literally, in answers they are escaped.
    ///
    /// An update outside `beginUpdate`/`commitUpdate` is on stable storage before it is answered.
    virtual std::string request(const std::string& requestText) = 0;

    /// Collects the updates of the calling thread until `commitUpdate` so that they reach stable
    /// storage together. Reads see them at once. Calls nest per thread.
    virtual void beginUpdate() = 0;
    /// Ends what `beginUpdate` began. Every update made so far is on stable storage when it answers
    /// true, also at an inner level. False: none of the updates that were still pending happened.
    virtual bool commitUpdate() = 0;

    /// Whether a column that takes effect only after a reboot was changed since the start.
    virtual bool isRebootRequired() = 0;
};

}  // namespace vireo
