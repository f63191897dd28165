#pragma once

#include <memory>
#include <optional>
#include <string>

#include "service/ConfigurationCheck.h"
#include "service/Invoker.h"
#include "service/Proxy.h"
#include "service/Service.h"

namespace vireo {

/// Destroys an object of a plug-in and keeps the plug-in's code loaded until then.
struct PluginDeleter {
    std::shared_ptr<void> library;

    template <class Object>
    void operator()(Object* object) const {
        delete object;
    }
};

using PluginService = std::unique_ptr<Service, PluginDeleter>;
using PluginInvoker = std::unique_ptr<Invoker, PluginDeleter>;
using PluginProxy = std::unique_ptr<Proxy, PluginDeleter>;
using PluginCheck = std::unique_ptr<ConfigurationCheck, PluginDeleter>;

/// A shared library whose factories make services and invokers. The library stays loaded as long as
/// the loader or one of its objects lives. Tasks and other closures that the plug-in left elsewhere
/// must be destroyed before the last of them.
class PluginLoader {
public:
    static constexpr const char* kServiceFactory = "createVireoClientMgmt";
    static constexpr const char* kFurtherServiceFactory = "createService";
    static constexpr const char* kLocalInvokerFactory = "createLocalMgmtInvoker";
    static constexpr const char* kAgentProxyFactory = "createMgmtAgentProxy";
    static constexpr const char* kLocalCallbackProxyFactory = "createLocalMgmtCallbackProxy";
    static constexpr const char* kRemoteCallbackProxyFactory = "createRemoteMgmtCallbackProxy";
    static constexpr const char* kCheckFactory = "createConfigurationCheck";

    /// Loads `file`, with all its symbols resolved. Empty with a one-line `error` that names the
    /// file and what is missing.
    static std::optional<PluginLoader> load(const std::string& file, std::string& error);

    /// Calls the factory exported as `symbol`, which takes nothing and answers a new object. Null
    /// with a one-line `error` that names file and symbol.
    PluginService createService(const char* symbol, std::string& error) const;
    PluginInvoker createInvoker(const char* symbol, std::string& error) const;
    PluginProxy createProxy(const char* symbol, std::string& error) const;
    PluginCheck createCheck(const char* symbol, std::string& error) const;

private:
    PluginLoader(std::string file, std::shared_ptr<void> library)
        : m_file(std::move(file)), m_library(std::move(library)) {}

    template <class Object>
    std::unique_ptr<Object, PluginDeleter> create(const char* symbol, std::string& error) const;

    std::string m_file;
    std::shared_ptr<void> m_library;
};

}  // namespace vireo
