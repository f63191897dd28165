#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>

#include "LocalMgmtIfc.h"
#include "RemoteMgmtIfc.h"
#include "data/ManageableData.h"
#include "runtime/PluginLoader.h"
#include "service/Context.h"
#include "service/Invoker.h"
#include "service/Service.h"
#include "support/SmallPhone.h"

namespace vireo {
namespace {

struct EmptyContext : SvcRTEContext {
    Executable* findService(const std::string&) override { return nullptr; }
    void postToMessageThread(std::function<void()>) override {}
    TimerFacility* timers() override { return nullptr; }
};

TEST(Plugin, ItsServiceIsReachedThroughEveryInterfaceAcrossTheBoundary) {
    test::TestPorts ports;
    test::installSmallPhone(ports);
    std::string error;
    const auto plugin = PluginLoader::load(VIREO_PLUGIN, error);
    ASSERT_TRUE(plugin) << error;
    const auto service = plugin->createService("createVireoClientMgmt", error);
    ASSERT_TRUE(service) << error;
    EXPECT_TRUE(plugin->createInvoker("createLocalMgmtInvoker", error)) << error;
    EmptyContext context;
    service->init(context);
    auto* local = dynamic_cast<LocalMgmtIfc*>(static_cast<Executable*>(service.get()));
    ASSERT_NE(local, nullptr);
    EXPECT_NE(dynamic_cast<RemoteMgmtIfc*>(service.get()), nullptr);
    ManageableData record;
    record.populate("plain", "x");
    EXPECT_TRUE(local->setData(record));
    std::string value;
    EXPECT_TRUE(local->getData("plain", value));
    EXPECT_EQ(value, "x");
    service->shutdown();
}

TEST(Plugin, ExportsItsFactoriesAndNothingElse) {
    void* library = ::dlopen(VIREO_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << ::dlerror();
    EXPECT_NE(::dlsym(library, "createVireoClientMgmt"), nullptr);
    EXPECT_NE(::dlsym(library, "createLocalMgmtInvoker"), nullptr);
    // A member of the plug-in's main class, and of a class inside it.
    EXPECT_EQ(::dlsym(library, "_ZN5vireo15VireoClientMgmtC1Ev"), nullptr);
    EXPECT_EQ(::dlsym(library, "_ZN5vireo13ItemCatalogueC1Ev"), nullptr);
    ::dlclose(library);
}

}  // namespace
}  // namespace vireo
