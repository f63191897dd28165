#include "runtime/PluginLoader.h"

#include <dlfcn.h>

#include <exception>
#include <filesystem>

namespace vireo {
namespace {

std::string lastLoaderError() {
    const char* text = ::dlerror();
    return text == nullptr ? "unknown reason" : text;
}

}  // namespace

std::optional<PluginLoader> PluginLoader::load(const std::string& file, std::string& error) {
    // A plain file name means the one in the current directory, never one on the library path.
    std::error_code failure;
    const std::filesystem::path whole = std::filesystem::absolute(file, failure);
    if (failure || !std::filesystem::is_regular_file(whole, failure)) {
        error = "cannot load the plug-in \"" + file + "\": there is no such file";
        return std::nullopt;
    }
    void* handle = ::dlopen(whole.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        error = "cannot load the plug-in \"" + file + "\": " + lastLoaderError();
        return std::nullopt;
    }
    return PluginLoader(file,
                        std::shared_ptr<void>(handle, [](void* opened) { ::dlclose(opened); }));
}

template <class Object>
std::unique_ptr<Object, PluginDeleter> PluginLoader::create(const char* symbol,
                                                            std::string& error) const {
    std::unique_ptr<Object, PluginDeleter> object(nullptr, PluginDeleter{m_library});
    void* address = ::dlsym(m_library.get(), symbol);
    if (address == nullptr) {
        error = "the plug-in \"" + m_file + "\" has no factory \"" + symbol + '"';
        return object;
    }
    try {
        object.reset(reinterpret_cast<Object* (*)()>(address)());
        if (object == nullptr) {
            error = "the factory \"" + std::string(symbol) + "\" of the plug-in \"" + m_file +
                    "\" made nothing";
        }
    } catch (const std::exception& exception) {
        error = "the factory \"" + std::string(symbol) + "\" of the plug-in \"" + m_file +
                "\" failed: " + exception.what();
    }
    return object;
}

PluginService PluginLoader::createService(const char* symbol, std::string& error) const {
    return create<Service>(symbol, error);
}

PluginProxy PluginLoader::createProxy(const char* symbol, std::string& error) const {
    return create<Proxy>(symbol, error);
}

PluginInvoker PluginLoader::createInvoker(const char* symbol, std::string& error) const {
    return create<Invoker>(symbol, error);
}

PluginCheck PluginLoader::createCheck(const char* symbol, std::string& error) const {
    return create<ConfigurationCheck>(symbol, error);
}

}  // namespace vireo
