#include <string>
#include <vector>

#include "harness/Exchange.h"
#include "rows/Rows.h"

namespace vireo::bench {
namespace {

constexpr std::size_t kSmallPhone = 1000;
constexpr std::size_t kItemsInRecord = 100;
constexpr double kKibi = 1024;

void addBytes(Report& report, const char* measured, double bytes, double goalKibi) {
    Row row;
    row.measured = measured;
    row.against = "itself with fewer";
    row.value.median = bytes / kKibi;
    row.unit = "KiB";
    row.goal = Goal::atMost(goalKibi);
    report.add(std::move(row));
}

/// Writes every item of the owner that is not there, so that its values are kept in memory.
void writeAbsent(const Phone& phone, std::size_t count) {
    const auto client = phone.connect();
    std::string reply;
    std::vector<std::string> tags;
    for (std::size_t i = 0; i < count; ++i) {
        tags.push_back(PhoneConfiguration::absentTag(i));
        if (tags.size() == kItemsInRecord || i + 1 == count) {
            exchange(*client, writeRequest(tags, valueOf('a')), reply);
            tags.clear();
        }
    }
}

}  // namespace

void measureMemory(Bench& bench) {
    const Phone small(bench.places, PhoneConfiguration(kSmallPhone));
    const PhoneConfiguration configuration(bench.largePhone);
    const Phone large(bench.places, configuration);
    const double before = large.residentBytes();
    addBytes(bench.report, "resident memory per configured item",
             (before - small.residentBytes()) / static_cast<double>(bench.largePhone - kSmallPhone),
             2);
    writeAbsent(large, configuration.absentCount());
    addBytes(bench.report, "more per cached item of 200 bytes",
             (large.residentBytes() - before) / static_cast<double>(configuration.absentCount()),
             1);
}

}  // namespace vireo::bench
