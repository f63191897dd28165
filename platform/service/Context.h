#pragma once

#include <functional>
#include <string>

#include "Visibility.h"

namespace vireo {

class Executable;
class TimerFacility;

/// What the framework gives to a service at its start. The concrete type is the run-time's.
class VIREO_API Context {
public:
    virtual ~Context() = default;
};

/// The context of the service run-time environment. Outlives the service. Safe from every thread.
class VIREO_API SvcRTEContext : public Context {
public:
    /// The service that offers `interfaceName`, or null when there is none (yet). Not owned by the
    /// caller; it lives as long as the context.
    virtual Executable* findService(const std::string& interfaceName) = 0;
    /// Runs `task` soon on the message thread, after the message that is being handled. Tasks run
    /// in the order in which they were posted. A task must not throw.
    virtual void postToMessageThread(std::function<void()> task) = 0;
    /// The timers of the framework; null where there are none. Lives as long as the context.
    virtual TimerFacility* timers() = 0;
    /// The device is about to be rebooted; the framework prepares what it wants to. Whether it did.
    virtual bool notifyGoingDown() { return false; }
};

}  // namespace vireo
