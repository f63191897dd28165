#pragma once

#include <functional>
#include <mutex>

namespace vireo {

class Executable;
class TimerFacility;

/// The service's timers, of which it uses one: the time that a file deployment may take. Safe from
/// every thread.
class FileDeploymentTimer {
public:
    /// Timers fire at `owner`; not owned, outlives this.
    explicit FileDeploymentTimer(Executable& owner) : m_owner(owner) {}

    /// `timers` (not owned, outlives this) may be null: then none can be made.
    void setFacility(TimerFacility* timers) { m_timers = timers; }

    /// The id, or -1.
    int createTimer(int milliseconds);
    /// 1 when it runs now, else 0.
    int startTimer(int id);
    void cancelTimer(int id);
    void deleteTimer(int id);

    /// Starts the deployment timer again, whether it runs or not. False for less than a second, or
    /// when there is no timer.
    bool startFileDeploymentTimer(int seconds);
    /// A timer of the service has fired; calls `onTimeout` when it was the deployment timer.
    void timerEvent(int id, const std::function<void()>& onTimeout);

private:
    Executable& m_owner;
    TimerFacility* m_timers = nullptr;
    std::mutex m_mutex;
    int m_FileManagerTimerId = -1;  // NOLINT(readability-identifier-naming): a log text names it
};

}  // namespace vireo
