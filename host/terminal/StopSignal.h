#pragma once

#include <chrono>

namespace vireo {

/// Ctrl-C and SIGTERM as something to wait for, so that a command that goes on can end in order.
/// One object, made before any other thread; from then on these signals do not end the program, nor
/// does writing to a reader that is gone.
class StopSignal {
public:
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    /// Readable, for good, once a signal has come. Not to be read from.
    int descriptor() const { return m_descriptor; }
    /// Waits at most so long. True when a signal has come.
    bool wait(std::chrono::milliseconds timeout) const;
    /// Waits for a signal.
    void wait() const;

private:
    int m_descriptor;
};

}  // namespace vireo
