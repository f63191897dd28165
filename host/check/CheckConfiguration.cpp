#include "check/CheckConfiguration.h"

#include <optional>
#include <system_error>

#include "check/CatalogueLayout.h"
#include "check/FindingPrinter.h"
#include "check/NotedFiles.h"
#include "log/Log.h"
#include "runtime/PluginLoader.h"

namespace vireo {
namespace {

using Severity = ConfigurationFinding::Severity;

/// The ports are installed as long as anything loads.
class CheckPorts {
public:
    CheckPorts(LogPort& log, ConfigPort& config) {
        setLogLevel(kLogWarning);
        installPorts({.log = &log, .config = &config});
    }
    ~CheckPorts() { installPorts({}); }
    CheckPorts(const CheckPorts&) = delete;
    CheckPorts& operator=(const CheckPorts&) = delete;
};

std::optional<StoreCatalogue> readCatalogue(const std::string& name, NotedFiles& files,
                                            FindingPrinter& printer) {
    std::string text;
    std::string error;
    std::optional<StoreCatalogue> catalogue;
    if (files.readConfigFile(name, text, error)) {
        catalogue = StoreCatalogue::parse(text, error);
    }
    if (!catalogue) {
        printer.report(
            {Severity::eError, name, error, "mend the file: without it the store stays closed"});
    }
    return catalogue;
}

void reportUnusedFiles(const std::string& directory, const NotedFiles& files,
                       FindingPrinter& printer) {
    std::set<std::string> unused;
    std::error_code failure;
    for (std::filesystem::directory_iterator entry(directory, failure), end;
         !failure && entry != end; entry.increment(failure)) {
        const std::string name = entry->path().filename();
        if (entry->path().extension() == ".xml" && !files.names().contains(name)) {
            unused.insert(name);
        }
    }
    for (const std::string& name : unused) {
        printer.report({Severity::eError, name, "nothing imports this file",
                        "add an <import> to a service of vcmsInit.xml, or delete the file"});
    }
}

}  // namespace

int checkConfiguration(const HostOptions& options) {
    std::string error;
    const auto library = PluginLoader::load(options.plugin, error);
    const auto check = library ? library->createCheck(PluginLoader::kCheckFactory, error) : nullptr;
    if (!check) {
        std::fprintf(stderr, "vireod: cannot check: %s\n", error.c_str());
        return 1;
    }
    NotedFiles files(options.configDirectory, options.maximumConfigFile);
    FindingPrinter printer(stdout);
    const CheckPorts ports(printer, files);
    const auto catalogue = readCatalogue(options.storeCatalogue, files, printer);
    std::optional<CatalogueLayout> layout;
    if (catalogue) {
        layout.emplace(*catalogue);
    }
    const ConfigurationSize size = check->check(layout ? &*layout : nullptr, printer);
    reportUnusedFiles(options.configDirectory, files, printer);
    printer.printSummary(size);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::fprintf(stderr, "vireod: the findings cannot be written out\n");
        return 1;
    }
    return printer.errors() == 0 ? 0 : 1;
}

}  // namespace vireo
