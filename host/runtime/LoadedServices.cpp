#include "runtime/LoadedServices.h"

#include <exception>
#include <utility>

#include "MgmtAgentIfc.h"
#include "log/Log.h"
#include "messages/AgentText.h"
#include "messages/MessageLoop.h"
#include "runtime/ServiceRegistry.h"

namespace vireo {
namespace {

void logFailure(const std::string& channel, const std::string& what, const std::string& why) {
    if (loggingOnUni(kLogError)) {
        logAppUni("LoadedServices", "./host/runtime/LoadedServices", kLogError, __LINE__,
                  "the service \"%s\" %s: %s", channel.c_str(), what.c_str(), why.c_str());
    }
}

template <class Call>
bool guarded(const std::string& channel, const char* what, Call&& call) {
    try {
        call();
        return true;
    } catch (const std::exception& exception) {
        logFailure(channel, what, exception.what());
    } catch (...) {
        logFailure(channel, what, "it threw no exception of the standard library");
    }
    return false;
}

}  // namespace

void LoadedServices::load(const std::vector<NamedPlugin>& plugins, ServiceRegistry& services,
                          MessageLoop& loop) {
    for (const NamedPlugin& plugin : plugins) {
        std::string error;
        if (!loadOne(plugin, services, loop, error)) {
            logFailure(plugin.channel, "is left out", error);
        }
    }
}

bool LoadedServices::loadOne(const NamedPlugin& plugin, ServiceRegistry& services,
                             MessageLoop& loop, std::string& error) {
    std::optional<PluginLoader> library = PluginLoader::load(plugin.file, error);
    if (!library) {
        return false;
    }
    PluginService service = library->createService(PluginLoader::kFurtherServiceFactory, error);
    if (!service || !loop.reserveChannel(plugin.channel, error)) {
        return false;
    }
    if (dynamic_cast<MgmtAgentIfc*>(service.get()) != nullptr) {
        services.addOnChannel(std::string(AgentText::kInterface), plugin.channel, *service);
    }
    m_libraries.push_back(std::move(*library));
    m_services.push_back({plugin.channel, std::move(service)});
    return true;
}

void LoadedServices::start(Context& context) {
    for (Loaded& each : m_services) {
        each.isRunning = guarded(each.channel, "did not start", [&] {
            each.service->init(context);
            each.service->run();
        });
    }
}

void LoadedServices::shutdown() {
    for (auto each = m_services.rbegin(); each != m_services.rend(); ++each) {
        if (std::exchange(each->isRunning, false)) {
            guarded(each->channel, "did not end well", [&] { each->service->shutdown(); });
        }
    }
}

}  // namespace vireo
