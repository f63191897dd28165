#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "HostDevices.h"
#include "log/SpdlogPort.h"
#include "messages/HostFramework.h"
#include "messages/MessageLoop.h"
#include "messages/ProxyTable.h"
#include "messages/RpcAdapter.h"
#include "messages/ServiceXmlAdapter.h"
#include "options/HostOptions.h"
#include "runtime/ConfigDirectory.h"
#include "runtime/DeviceRoot.h"
#include "runtime/HostContext.h"
#include "runtime/LoadedServices.h"
#include "runtime/PluginLoader.h"
#include "runtime/ServiceRegistry.h"
#include "runtime/TimerQueue.h"
#include "store/StoreGate.h"

namespace vireo {

/// All parts of a running vireod. Used by the main thread.
class HostProcess {
public:
    HostProcess() = default;
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;
    /// Stops what runs.
    ~HostProcess() { stop(); }

    /// Starts everything, the message thread last. False with a one-line `error`; the object is
    /// good for nothing but its end then. Should the message thread end by itself later, the
    /// process is sent SIGTERM.
    bool start(const HostOptions& options, std::string& error);
    /// Whether nobody objects to an end. May wait for a client's answer.
    bool requestShutdown();
    /// Ends what the devices do, then the message thread after the message that it handles, then
    /// the further services, then the service.
    void stop();
    /// Whether the message thread ended by itself.
    bool failed() const { return m_failed.load(); }
    /// Whether the phone is being rebooted: the process has been sent SIGTERM for that.
    bool isRebooting() const { return m_devices != nullptr && m_devices->isRebooting(); }

private:
    /// The ports stay installed as long as anything can log.
    class Ports {
    public:
        void install(const HostOptions& options);
        /// The others, which the log and the configuration do without.
        void add(HostDevices& devices);
        ~Ports();

    private:
        std::unique_ptr<SpdlogPort> m_log;
        std::unique_ptr<ConfigDirectory> m_config;
    };

    void openDevices(const DeviceRoot& root, const HostOptions& options);
    void confirmSoftware();
    void openStore(const DeviceRoot& root, const HostOptions& options);
    bool loadService(const std::string& plugin, std::string& error);
    void offerProxy(const char* interfaceName, const char* factory);
    void watchPeers();
    void startService(const HostOptions& options);

    // In the order in which they are needed; their end is the other way round. The loop holds tasks
    // whose code is the plug-ins', so it ends before they are unloaded.
    Ports m_ports;
    std::optional<DeviceRoot> m_root;
    std::unique_ptr<HostDevices> m_devices;
    std::unique_ptr<StoreGate> m_store;
    std::optional<PluginLoader> m_plugin;
    LoadedServices m_further;
    RpcAdapter m_rpcAdapter;
    ServiceXmlAdapter m_serviceXmlAdapter;
    ServiceRegistry m_services;
    MessageLoop m_loop;
    ProxyTable m_proxies{m_loop, m_services};
    HostFramework m_framework{m_loop, m_proxies};
    TimerQueue m_timers{m_loop};
    HostContext m_context{m_services, m_loop, m_timers};
    PluginService m_service;
    PluginInvoker m_invoker;
    bool m_started = false;
    std::atomic<bool> m_failed{false};
    std::thread m_messageThread;
};

}  // namespace vireo
