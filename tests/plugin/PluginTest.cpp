#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

#include "LocalMgmtIfc.h"
#include "RemoteMgmtIfc.h"
#include "runtime/PluginLoader.h"
#include "service/Invoker.h"
#include "service/Service.h"

namespace vireo {
namespace {

TEST(Plugin, ItsServiceIsReachedThroughEveryInterfaceAcrossTheBoundary) {
    std::string error;
    const auto plugin = PluginLoader::load(VIREO_PLUGIN, error);
    ASSERT_TRUE(plugin) << error;
    const auto service = plugin->createService("createVireoClientMgmt", error);
    ASSERT_TRUE(service) << error;
    EXPECT_TRUE(plugin->createInvoker("createLocalMgmtInvoker", error)) << error;
    EXPECT_NE(dynamic_cast<LocalMgmtIfc*>(static_cast<Executable*>(service.get())), nullptr);
    EXPECT_NE(dynamic_cast<RemoteMgmtIfc*>(service.get()), nullptr);
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
