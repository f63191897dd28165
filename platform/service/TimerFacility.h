#pragma once

#include "Visibility.h"

namespace vireo {

class Executable;

/// The framework's timers. Each fires once per start, as `timerEvent` of its owner, on the message
/// thread. Safe from every thread. Throws nothing.
class VIREO_API TimerFacility {
public:
    virtual ~TimerFacility() = default;
    /// Makes a timer that does not run yet. `owner` (not owned) outlives it. Its id, from 1, or -1
    /// when there can be none; less than 1 ms is no timer.
    virtual int create(Executable& owner, int milliseconds) = 0;
    /// Starts it, or starts it again from now. 1, or 0 when there is no such timer.
    virtual int start(int id) = 0;
    /// Stops it. 1, also when it has fired or never ran; 0 when there is no such timer. On the
    /// message thread it does not fire any more after this.
    virtual int stop(int id) = 0;
    /// Removes it, running or not. 1, or 0 when there is no such timer. Ids are not used again.
    virtual int remove(int id) = 0;
};

}  // namespace vireo
