#include "rivals/DbusService.h"

#include <systemd/sd-bus.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <system_error>

#include "harness/Failure.h"

namespace vireo::bench {
namespace {

constexpr const char* kName = "bench.Settings";
constexpr const char* kPath = "/bench/settings";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
constexpr const char* kSilent = "Value";
constexpr const char* kTold = "ToldValue";

void check(int result, const char* what) {
    if (result < 0) {
        throw Failure(std::string("D-Bus: ") + what + ": " +
                      std::generic_category().message(-result));
    }
}

// -- the service ------------------------------------------------------------------------------

int readText(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* text,
             sd_bus_error*) {
    return sd_bus_message_append(reply, "s", static_cast<std::string*>(text)->c_str());
}

int writeText(sd_bus* bus, const char* path, const char* interface, const char* property,
              sd_bus_message* value, void* text, sd_bus_error*) {
    const char* given = nullptr;
    if (const int result = sd_bus_message_read(value, "s", &given); result < 0) {
        return result;
    }
    *static_cast<std::string*>(text) = given;
    return std::strcmp(property, kTold) == 0
               ? sd_bus_emit_properties_changed(bus, path, interface, property, nullptr)
               : 0;
}

const sd_bus_vtable kVtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_WRITABLE_PROPERTY(kSilent, "s", readText, writeText, 0, 0),
    SD_BUS_WRITABLE_PROPERTY(kTold, "s", readText, writeText, 0,
                             SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_VTABLE_END,
};

[[noreturn]] void serveText(Bus bus, const std::function<void()>& ready) {
    std::string text = valueOf('a');
    check(sd_bus_add_object_vtable(bus.get(), nullptr, kPath, kName, kVtable, &text),
          "add a vtable");
    check(sd_bus_request_name(bus.get(), kName, 0), "request a name");
    ready();
    for (;;) {
        const int done = sd_bus_process(bus.get(), nullptr);
        check(done, "serve");
        if (done == 0) {
            check(sd_bus_wait(bus.get(), UINT64_MAX), "wait");
        }
    }
}

// -- the client -------------------------------------------------------------------------------

template <class IsDone>
void processUntil(sd_bus* bus, IsDone&& isDone) {
    while (!isDone()) {
        const int done = sd_bus_process(bus, nullptr);
        check(done, "process");
        if (done == 0 && !isDone()) {
            check(sd_bus_wait(bus, UINT64_MAX), "wait");
        }
    }
}

int takeAnswer(sd_bus_message* message, void* left, sd_bus_error*) {
    const char* text = nullptr;
    const int result = sd_bus_message_read(message, "v", "s", &text);
    --*static_cast<unsigned*>(left);
    return result;
}

int takeChange(sd_bus_message* message, void* heard, sd_bus_error*) {
    const char* property = nullptr;
    const char* text = nullptr;
    if (sd_bus_message_skip(message, "s") >= 0 &&
        sd_bus_message_enter_container(message, 'a', "{sv}") >= 0 &&
        sd_bus_message_read(message, "{sv}", &property, "s", &text) > 0) {
        ++*static_cast<unsigned*>(heard);
    }
    return 0;
}

void writeConfiguration(const std::string& path, const std::string& address) {
    std::ofstream file(path);
    file << R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>)"
         << address << R"(</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <limit name="max_replies_per_connection">50000</limit>
</busconfig>
)";
    require(static_cast<bool>(file.flush()), "cannot write the configuration of dbus-daemon");
}

}  // namespace

void BusCloser::operator()(sd_bus* bus) const {
    sd_bus_flush_close_unref(bus);
}

DbusService::DbusService(const Places& places)
    : m_directory(places.sockets), m_address("unix:path=" + m_directory.file("bus")) {
    const std::string configuration = m_directory.file("bus.conf");
    writeConfiguration(configuration, m_address);
    m_daemon = Process::run({"dbus-daemon", "--config-file=" + configuration, "--nofork",
                             "--nopidfile", "--print-address"},
                            "unix:path=", places.log);
    m_service =
        Process::fork([this](const std::function<void()>& ready) { serveText(connect(), ready); });
    m_bus = connect();
}

Bus DbusService::connect() const {
    sd_bus* raw = nullptr;
    check(sd_bus_new(&raw), "new connection");
    Bus bus(raw);
    check(sd_bus_set_address(raw, m_address.c_str()), "set the address");
    check(sd_bus_set_bus_client(raw, 1), "be a client");
    check(sd_bus_start(raw), "connect");
    return bus;
}

void DbusService::get() {
    char* text = nullptr;
    check(sd_bus_get_property_string(m_bus.get(), kName, kPath, kName, kSilent, nullptr, &text),
          "Get");
    std::free(text);
}

void DbusService::set() {
    write(kSilent);
}

void DbusService::write(const char* property) {
    m_isOdd = !m_isOdd;
    check(sd_bus_set_property(m_bus.get(), kName, kPath, kName, property, nullptr, "s",
                              valueOf(m_isOdd ? 'a' : 'b').c_str()),
          "Set");
}

void DbusService::get(unsigned inFlight) {
    unsigned left = inFlight;
    for (unsigned i = 0; i < inFlight; ++i) {
        check(sd_bus_call_method_async(m_bus.get(), nullptr, kName, kPath, kProperties, "Get",
                                       takeAnswer, &left, "ss", kName, kSilent),
              "Get");
    }
    processUntil(m_bus.get(), [&] { return left == 0; });
}

void DbusService::observe(unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        auto observer = std::make_unique<Observer>();
        observer->bus = connect();
        check(sd_bus_match_signal(observer->bus.get(), nullptr, kName, kPath, kProperties,
                                  "PropertiesChanged", takeChange, &observer->heard),
              "match");
        m_observers.push_back(std::move(observer));
    }
}

void DbusService::setAndHear() {
    for (const auto& observer : m_observers) {
        observer->heard = 0;
    }
    write(kTold);
    for (const auto& observer : m_observers) {
        processUntil(observer->bus.get(), [&] { return observer->heard > 0; });
    }
}

}  // namespace vireo::bench
