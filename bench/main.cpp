// Prints one page of ratios: the phone service against what a program would use instead, measured
// beside it.
#include <getopt.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string>

#include "harness/Process.h"
#include "rows/Rows.h"

using namespace vireo::bench;

namespace {

struct Measurement {
    const char* name;
    void (*run)(Bench&);
};

constexpr Measurement kMeasurements[] = {
    {"requests", measureRequests},     {"in-flight", measureRequestsInFlight},
    {"durable", measureDurableWrites}, {"owners", measureOwners},
    {"observers", measureObservers},   {"peers", measureManyPeers},
    {"start", measureStart},           {"memory", measureMemory},
    {"downloads", measureDownloads},   {"burn", measureBurns},
    {"files", measureFiles},
#ifdef VIREO_SNMP
    {"traps", measureTraps},
#endif
};

struct Options {
    bool isQuick = false;
    std::string only;
    std::string json;
    std::string files = ".";
    int processor = -1;
};

[[noreturn]] void showUsage(int status) {
    std::printf(
        "usage: vireo_bench [--quick] [--only NAME] [--json FILE] [--files DIR] [--processor N]\n"
        "  --quick        fewer and shorter rounds, under a minute\n"
        "  --only NAME    one of:");
    for (const Measurement& each : kMeasurements) {
        std::printf(" %s", each.name);
    }
    std::printf(
        "\n  --json FILE    writes the page for machines as well\n"
        "  --files DIR    where stores and configurations are made, on a disk; default: here\n"
        "  --processor N  runs everything on this one; default: the last\n");
    std::exit(status);
}

Options parse(int argc, char** argv) {
    const option names[] = {{"quick", no_argument, nullptr, 'q'},
                            {"only", required_argument, nullptr, 'o'},
                            {"json", required_argument, nullptr, 'j'},
                            {"files", required_argument, nullptr, 'f'},
                            {"processor", required_argument, nullptr, 'p'},
                            {"help", no_argument, nullptr, 'h'},
                            {}};
    Options options;
    for (int found = 0; (found = ::getopt_long(argc, argv, "", names, nullptr)) != -1;) {
        switch (found) {
            case 'q':
                options.isQuick = true;
                break;
            case 'o':
                options.only = optarg;
                break;
            case 'j':
                options.json = optarg;
                break;
            case 'f':
                options.files = optarg;
                break;
            case 'p':
                options.processor = std::atoi(optarg);
                break;
            case 'h':
                showUsage(0);
            default:
                showUsage(2);
        }
    }
    if (optind < argc) {
        showUsage(2);
    }
    return options;
}

/// A thousand peers, and their other ends, are more than a process may open by default.
void raiseDescriptorLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

bool measure(const Options& options) {
    const int processor = options.processor < 0 ? lastProcessor() : options.processor;
    pinTo(processor);
    raiseDescriptorLimit();
    Report report;
    const ScratchDirectory files(std::filesystem::absolute(options.files));
    const ScratchDirectory sockets(std::filesystem::temp_directory_path());
    const std::string log = std::filesystem::absolute(options.files) / "bench.log";
    std::filesystem::remove(log);
    Bench bench{{}, {files.path(), sockets.path(), log}, 100'000, report, 200'000'000};
    if (options.isQuick) {
        bench.pace = {9, 0.01, 3};
        bench.largePhone = 20'000;
        bench.largeFile = 20'000'000;
    }
    std::printf("Everything on processor %d, %u rounds by turns, medians.\n", processor,
                bench.pace.rounds);
    report.printHead();
    for (const Measurement& each : kMeasurements) {
        if (!options.only.empty() && options.only != each.name) {
            continue;
        }
        try {
            each.run(bench);
        } catch (const std::exception& exception) {
            report.addFailure(each.name, exception.what());
        }
    }
    if (!options.json.empty()) {
        report.writeJson(options.json, options.isQuick ? "quick" : "full");
    }
    return report.printSummary();
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return measure(parse(argc, argv)) ? 0 : 1;
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "vireo_bench: %s\n", exception.what());
        return 1;
    }
}
