#pragma once

#include <string>
#include <vector>

#include "runtime/PluginLoader.h"

namespace vireo {

class Context;
class MessageLoop;
class ServiceRegistry;

/// A plug-in and the channel name that its service gets.
struct NamedPlugin {
    std::string channel;
    std::string file;
};

/// The services that run in this process beside the client management service. Used on the thread
/// that starts and stops the process. Their code stays loaded as long as this object lives, so
/// tasks of theirs may be left elsewhere until then.
class LoadedServices {
public:
    /// Makes a service of each plug-in. Its channel name is then closed to peers, and if it is a
    /// `MgmtAgentIfc` it is found under that name. One that cannot be made gets one error line, the
    /// others do not notice. Before other threads use `services` or `loop`.
    void load(const std::vector<NamedPlugin>& plugins, ServiceRegistry& services,
              MessageLoop& loop);
    /// Initialises and runs them, in order. `context` outlives their destruction.
    void start(Context& context);
    /// Ends those that were started, the last one first. They can still be called.
    void shutdown();
    /// Nobody knows them any more.
    void destroy() { m_services.clear(); }

private:
    struct Loaded {
        std::string channel;
        PluginService service;
        bool isRunning = false;
    };

    bool loadOne(const NamedPlugin& plugin, ServiceRegistry& services, MessageLoop& loop,
                 std::string& error);

    std::vector<PluginLoader> m_libraries;
    std::vector<Loaded> m_services;
};

}  // namespace vireo
