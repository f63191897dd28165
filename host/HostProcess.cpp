#include "HostProcess.h"

#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <future>
#include <utility>

#include "LocalMgmtIfc.h"
#include "PeerWatcherIfc.h"
#include "Ports.h"
#include "ShutdownConsentIfc.h"
#include "log/Log.h"
#include "messages/ListeningSocket.h"
#include "service/ProtocolAdapter.h"

namespace vireo {
namespace {

constexpr const char* kStoreInterface = "DataAccessServiceIfc";
constexpr const char* kLocalInterface = "LocalMgmtIfc";

// How long the message thread may take to answer after the start.
constexpr std::chrono::seconds kHealthyStart(10);

// Descriptors that the service needs besides those of its peers.
constexpr rlim_t kOwnDescriptors = 64;

void logLine(int level, int line, const std::string& text) {
    if (loggingOnUni(level)) {
        logAppUni("vireod", "./host/HostProcess", level, line, "%s", text.c_str());
    }
}

/// As far as the machine allows; peers that find no descriptor wait.
void allowDescriptors(std::size_t peers) {
    rlimit limit{};
    const rlim_t wanted = peers + kOwnDescriptors;
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < wanted) {
        limit.rlim_cur = wanted < limit.rlim_max ? wanted : limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
    if (limit.rlim_cur < wanted) {
        logLine(kLogWarning, __LINE__,
                "this process may open " + std::to_string(limit.rlim_cur) + " files: fewer than " +
                    std::to_string(peers) + " peers will be served at a time");
    }
}

/// The service starts without configuration, too: it can then be asked at least.
void warnOfConfigDirectory(const std::string& path) {
    std::error_code failure;
    const std::filesystem::directory_iterator readable(path, failure);
    if (failure) {
        logLine(kLogError, __LINE__,
                "cannot read the configuration directory " + path + ": " + failure.message() +
                    ". The phone has no items; --config names the directory");
    }
}

}  // namespace

void HostProcess::Ports::install(const HostOptions& options) {
    std::string error;
    if (!options.logFile.empty()) {
        m_log = SpdlogPort::toFile(options.logFile, error, options.log);
    }
    if (!m_log) {
        m_log = SpdlogPort::toStandardError(options.log);
    }
    m_config =
        std::make_unique<ConfigDirectory>(options.configDirectory, options.maximumConfigFile);
    setLogLevel(options.logLevel);
    installPorts({.log = m_log.get(), .config = m_config.get()});
    if (!error.empty()) {
        logLine(kLogError, __LINE__, error + "; log lines go to standard error");
    }
}

void HostProcess::Ports::add(HostDevices& devices) {
    PlatformPorts ports = installedPorts();
    devices.addTo(ports);
    installPorts(ports);
}

HostProcess::Ports::~Ports() {
    installPorts({});
}

void HostProcess::openDevices(const DeviceRoot& root, const HostOptions& options) {
    m_devices = std::make_unique<HostDevices>(
        root.path(), options.devices,
        DeviceReboot::Hooks{
            [this](std::function<void()> task) { m_loop.postTask(std::move(task)); },
            [] { ::kill(::getpid(), SIGTERM); }});
    m_ports.add(*m_devices);
    m_devices->offer(m_services);
}

void HostProcess::openStore(const DeviceRoot& root, const HostOptions& options) {
    m_store = std::make_unique<StoreGate>((root.path() / options.storeFile).string(),
                                          options.storeCatalogue, options.store);
    m_services.add(kStoreInterface, *m_store);
}

bool HostProcess::loadService(const std::string& plugin, std::string& error) {
    m_plugin = PluginLoader::load(plugin, error);
    if (!m_plugin) {
        return false;
    }
    m_service = m_plugin->createService(PluginLoader::kServiceFactory, error);
    if (m_service) {
        m_invoker = m_plugin->createInvoker(PluginLoader::kLocalInvokerFactory, error);
    }
    return m_service != nullptr && m_invoker != nullptr &&
           m_services.add(kLocalInterface, *m_service);
}

void HostProcess::offerProxy(const char* interfaceName, const char* factory) {
    m_proxies.offer(interfaceName, [this, factory] {
        std::string error;
        PluginProxy proxy = m_plugin->createProxy(factory, error);
        if (!proxy) {
            logLine(kLogError, __LINE__, error);
        }
        return proxy;
    });
}

void HostProcess::watchPeers() {
    auto* const watcher = dynamic_cast<PeerWatcherIfc*>(m_service.get());
    if (watcher == nullptr) {
        return;
    }
    m_loop.watchPeers([this, watcher](const std::string& channel) {
        for (Executable* const proxy : m_proxies.allOf(channel)) {
            watcher->peerLeft(*proxy);
        }
    });
}

void HostProcess::startService(const HostOptions& options) {
    ProxyRequest::mDefaultTimeout = options.messages.answerTimeoutMs;
    m_framework.registerProtocol(VireoProtocols::DEFAULT, m_rpcAdapter);
    m_framework.registerProtocol(VireoProtocols::SERVICE_XML, m_serviceXmlAdapter);
    offerProxy("MgmtAgentIfc", PluginLoader::kAgentProxyFactory);
    offerProxy("LocalMgmtCallbackIfc", PluginLoader::kLocalCallbackProxyFactory);
    offerProxy("RemoteMgmtCallbackIfc", PluginLoader::kRemoteCallbackProxyFactory);
    m_service->init(m_context);
    m_invoker->initInvoker(&m_framework);
    m_service->run();
    m_started = true;
    m_devices->software().serve(
        dynamic_cast<LocalMgmtIfc&>(*m_service),
        [this](std::function<void()> task) { m_loop.postTask(std::move(task)); });
    m_further.start(m_context);
    m_loop.serve(kLocalInterface, *m_invoker, *m_service);
    watchPeers();
    m_messageThread = std::thread([this] {
        if (!m_loop.run()) {
            m_failed = true;
            ::kill(::getpid(), SIGTERM);
        }
    });
}

/// Software that is on trial has proved itself when the message thread answers.
void HostProcess::confirmSoftware() {
    if (!m_devices->banks().view().isOnTrial()) {
        return;
    }
    const auto answered = std::make_shared<std::promise<void>>();
    m_loop.postTask([answered] { answered->set_value(); });
    if (answered->get_future().wait_for(kHealthyStart) == std::future_status::ready) {
        m_devices->banks().confirm();
    } else {
        logLine(kLogError, __LINE__,
                "the message thread does not answer: the software is not confirmed");
    }
}

bool HostProcess::start(const HostOptions& options, std::string& error) {
    m_ports.install(options);
    warnOfConfigDirectory(options.configDirectory);
    allowDescriptors(options.messages.maximumPeers);
    m_root = DeviceRoot::prepare(options.root, error);
    if (!m_root) {
        error += "; --root names the directory";
        return false;
    }
    // The socket comes early: a service that cannot be reached should not touch the store.
    const bool isListening = m_loop.listen(options.socket, options.messages, error);
    // New software has its start counted before anything of it can go wrong. That somebody else
    // has the socket is not its fault.
    if (isListening || !ListeningSocket::isTaken(options.socket)) {
        openDevices(*m_root, options);
    }
    if (!isListening) {
        error += "; --socket names the path";
        return false;
    }
    openStore(*m_root, options);
    m_devices->provideFiles();
    if (!loadService(options.plugin, error)) {
        error += "; --plugin names the file";
        return false;
    }
    m_further.load(options.services, m_services, m_loop);
    startService(options);
    confirmSoftware();
    return true;
}

bool HostProcess::requestShutdown() {
    auto* const consent = dynamic_cast<ShutdownConsentIfc*>(m_service.get());
    const bool isAllowed =
        failed() || isRebooting() || consent == nullptr || consent->requestShutdown();
    if (!isAllowed) {
        logLine(kLogWarning, __LINE__,
                "a client that waits for a download does not want the phone to stop; a second "
                "signal stops it");
    }
    return isAllowed;
}

void HostProcess::stop() {
    if (m_devices) {
        m_devices->stop();  // the message thread may be waiting for a device
    }
    if (m_messageThread.joinable()) {
        m_loop.stop();
        m_messageThread.join();
    }
    if (m_started) {
        m_started = false;
        m_further.shutdown();
        m_service->shutdown();
        m_further.destroy();  // what they still know of the service is there up to here
    }
}

}  // namespace vireo
