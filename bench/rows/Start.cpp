#include <chrono>
#include <string>

#include "Ports.h"
#include "data/DataCollection.h"
#include "harness/Failure.h"
#include "items/ItemCatalogue.h"
#include "rivals/ThreeMaps.h"
#include "rows/Rows.h"
#include "runtime/ConfigDirectory.h"

namespace vireo::bench {
namespace {

using Clock = std::chrono::steady_clock;

// From many items on a start is long enough to be measured once in a round.
constexpr std::size_t kManyItems = 100'000;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Loads the catalogue as the service does when it starts.
double loadCatalogue(const std::string& directory, std::size_t items) {
    ConfigDirectory files(directory);
    installPorts({nullptr, &files});
    const auto start = Clock::now();
    DataCollection collections(nullptr);
    ItemCatalogue catalogue;
    require(catalogue.load(collections), "the service finds no configuration");
    const double seconds = secondsSince(start);
    const std::string last =
        PhoneConfiguration::absentTag(PhoneConfiguration(items).absentCount() - 1);
    require(catalogue.findSchemaName(last) == "text", "the service did not find all items");
    return seconds;
}

double loadMaps(const std::string& directory, std::size_t items) {
    const auto start = Clock::now();
    ThreeMaps maps;
    maps.load(directory, items);
    return secondsSince(start);
}

/// Each in a new process: memory that was used before costs less.
Comparison::TimedWork inNewProcess(double (*load)(const std::string&, std::size_t),
                                   const std::string& directory, std::size_t items) {
    return [=](unsigned count) {
        double seconds = 0;
        for (unsigned i = 0; i < count; ++i) {
            seconds += measureInFork([&] { return load(directory, items); });
        }
        return seconds;
    };
}

std::string withCommas(std::size_t number) {
    std::string text = std::to_string(number);
    for (auto at = static_cast<long>(text.size()) - 3; at > 0; at -= 3) {
        text.insert(static_cast<std::size_t>(at), 1, ',');
    }
    return text;
}

}  // namespace

void measureStart(Bench& bench) {
    const ScratchDirectory directory(bench.places.files);
    Comparison comparison;
    std::size_t ordered[3];
    std::size_t next = 0;
    struct Case {
        std::string name;
        std::size_t own;
        std::size_t rival;
        double goal;
    };
    std::vector<Case> cases;
    for (const std::size_t items : {std::size_t{1000}, std::size_t{10'000}, kManyItems}) {
        for (const bool isShuffled : {false, true}) {
            const std::string path =
                directory.file(std::to_string(items) + (isShuffled ? "-shuffled" : "-ordered"));
            PhoneConfiguration(items, isShuffled).write(path);
            Case each{
                "start with " + withCommas(items) + (isShuffled ? " items, shuffled" : " items"),
                comparison.addTimed(inNewProcess(loadCatalogue, path, items)),
                comparison.addTimed(inNewProcess(loadMaps, path, items)), isShuffled ? 0.25 : 0.5};
            if (!isShuffled) {
                ordered[next++] = each.own;
            }
            cases.push_back(std::move(each));
        }
    }
    comparison.runSingly(bench.pace.heavyRounds);
    for (const Case& each : cases) {
        bench.report.add(each.name, "pugixml + three std::map", comparison, each.own, each.rival,
                         Goal::atMost(each.goal));
    }
    Row growth;
    growth.measured = "start, time per item at 100,000";
    growth.against = "at 10,000";
    growth.value = comparison.ratio(ordered[2], ordered[1]);
    growth.value.median /= 10;
    growth.value.lowerQuartile /= 10;
    growth.value.upperQuartile /= 10;
    growth.goal = Goal::atMost(1.5);
    growth.rounds = comparison.rounds();
    bench.report.add(std::move(growth));
}

}  // namespace vireo::bench
