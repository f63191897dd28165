#pragma once

#include <memory>
#include <string>
#include <vector>

#include "harness/Phone.h"
#include "harness/Process.h"
#include "harness/ScratchDirectory.h"

struct sd_bus;

namespace vireo::bench {

/// A connection to a bus.
struct BusCloser {
    void operator()(sd_bus* bus) const;
};
using Bus = std::unique_ptr<sd_bus, BusCloser>;

/// A bus of its own: a dbus-daemon and, in another process, an sd-bus service with one text. This
/// process is its client.
class DbusService {
public:
    explicit DbusService(const Places& places);

    /// Reads the text.
    void get();
    /// Writes the text and tells nobody.
    void set();
    /// Reads it so many times, all calls first.
    void get(unsigned inFlight);

    /// From now on so many further connections are told of changes.
    void observe(unsigned count);
    /// Writes the text and waits until every observer has the new one.
    void setAndHear();

private:
    struct Observer {
        Bus bus;
        unsigned heard = 0;
    };

    Bus connect() const;
    void write(const char* property);

    ScratchDirectory m_directory;
    std::string m_address;
    Process m_daemon;
    Process m_service;
    Bus m_bus;
    std::vector<std::unique_ptr<Observer>> m_observers;
    bool m_isOdd = false;
};

}  // namespace vireo::bench
