#include <dlfcn.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "log/Log.h"
#include "runtime/PluginLoader.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {
namespace {

/// A shared library that is certainly there and certainly no plug-in.
std::string valueLibrary() {
    Dl_info info{};
    return ::dladdr(reinterpret_cast<void*>(&setLogLevel), &info) != 0 ? info.dli_fname : "";
}

TEST(PluginLoader, AFileThatCannotBeLoadedIsNamedWithTheReason) {
    const TemporaryDirectory directory;
    const std::string text = directory.file("text.so");
    std::ofstream(text) << "not a library";
    const struct {
        std::string file;
        std::string reason;
    } rows[] = {
        {directory.file("missing.so"), "no such file"},
        {directory.path().string(), "no such file"},
        {"", "no such file"},
        // Not searched for on the library path.
        {"libc.so.6", "no such file"},
        {text, "file too short"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.file);
        std::string error;
        EXPECT_FALSE(PluginLoader::load(row.file, error));
        EXPECT_NE(error.find('"' + row.file + '"'), std::string::npos) << error;
        EXPECT_NE(error.find(row.reason), std::string::npos) << error;
    }
}

TEST(PluginLoader, AMissingFactoryIsNamedWithItsFile) {
    const std::string library = valueLibrary();
    std::string error;
    const auto plugin = PluginLoader::load(library, error);
    ASSERT_TRUE(plugin) << error;
    EXPECT_FALSE(plugin->createService(PluginLoader::kServiceFactory, error));
    EXPECT_EQ(error, "the plug-in \"" + library + "\" has no factory \"createVireoClientMgmt\"");
    EXPECT_FALSE(plugin->createInvoker(PluginLoader::kLocalInvokerFactory, error));
    EXPECT_EQ(error, "the plug-in \"" + library + "\" has no factory \"createLocalMgmtInvoker\"");
}

}  // namespace
}  // namespace vireo::test
