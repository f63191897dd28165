#include "HostProcess.h"

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

#include "Ports.h"
#include "log/Log.h"
#include "service/ProtocolAdapter.h"

namespace vireo {
namespace {

constexpr const char* kStoreInterface = "DataAccessServiceIfc";
constexpr const char* kLocalInterface = "LocalMgmtIfc";
constexpr const char* kCatalogueFile = "store.xml";

// Descriptors that the service needs besides those of its peers.
constexpr rlim_t kOwnDescriptors = 64;

/// As far as the machine allows; peers that find no descriptor wait.
void allowDescriptors(std::size_t peers) {
    rlimit limit{};
    const rlim_t wanted = peers + kOwnDescriptors;
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < wanted) {
        limit.rlim_cur = wanted < limit.rlim_max ? wanted : limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
    if (limit.rlim_cur < wanted && loggingOnUni(kLogWarning)) {
        logAppUni("vireod", "./host/HostProcess", kLogWarning, __LINE__,
                  "this process may open %lu files: fewer than %zu peers will be served at a time",
                  static_cast<unsigned long>(limit.rlim_cur), peers);
    }
}

}  // namespace

bool HostProcess::Ports::install(const HostOptions& options, std::string& error) {
    m_log = options.logFile.empty() ? SpdlogPort::toStandardError()
                                    : SpdlogPort::toFile(options.logFile, error);
    if (!m_log) {
        return false;
    }
    m_config = std::make_unique<ConfigDirectory>(options.configDirectory);
    setLogLevel(options.logLevel);
    installPorts({.log = m_log.get(), .config = m_config.get()});
    return true;
}

HostProcess::Ports::~Ports() {
    installPorts({});
}

bool HostProcess::openStore(const DeviceRoot& root, std::string& error) {
    std::string catalogueText;
    if (!installedPorts().config->readConfigFile(kCatalogueFile, catalogueText, error)) {
        return false;
    }
    std::string reason;
    auto catalogue = StoreCatalogue::parse(catalogueText, reason);
    if (!catalogue) {
        error = std::string("the store's catalogue ") + kCatalogueFile + ": " + reason;
        return false;
    }
    m_store = SqliteDataAccess::open(root.storeFile(), std::move(*catalogue), error);
    return m_store != nullptr && m_services.add(kStoreInterface, *m_store);
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

void HostProcess::startService() {
    m_framework.registerProtocol(VireoProtocols::DEFAULT, m_rpcAdapter);
    m_framework.registerProtocol(VireoProtocols::SERVICE_XML, m_serviceXmlAdapter);
    m_service->init(m_context);
    m_invoker->initInvoker(&m_framework);
    m_service->run();
    m_started = true;
    m_loop.serve(kLocalInterface, *m_invoker, *m_service);
    m_messageThread = std::thread([this] {
        if (!m_loop.run()) {
            m_failed = true;
            ::kill(::getpid(), SIGTERM);
        }
    });
}

bool HostProcess::start(const HostOptions& options, std::string& error) {
    if (!m_ports.install(options, error)) {
        return false;
    }
    allowDescriptors(options.maximumPeers);
    m_root = DeviceRoot::prepare(options.root, error);
    // The socket comes early: a service that cannot be reached should not touch the store.
    if (!m_root || !m_loop.listen(options.socket, options.maximumPeers, error) ||
        !openStore(*m_root, error) || !loadService(options.plugin, error)) {
        return false;
    }
    startService();
    return true;
}

void HostProcess::stop() {
    if (m_messageThread.joinable()) {
        m_loop.stop();
        m_messageThread.join();
    }
    if (m_started) {
        m_started = false;
        m_service->shutdown();
    }
}

}  // namespace vireo
