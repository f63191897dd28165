#pragma once

#include "harness/Comparison.h"
#include "harness/Phone.h"
#include "harness/Report.h"

namespace vireo::bench {

/// What a measurement works with.
struct Bench {
    Pace pace;
    Places places;
    std::size_t largePhone = 100'000;  ///< items of the phone whose memory is measured
    Report& report;
    std::size_t largeFile = 200'000'000;  ///< bytes of the file that is fetched
};

// Each measures what its name says and adds its rows to the report. Throws `Failure`.
void measureRequests(Bench& bench);
void measureRequestsInFlight(Bench& bench);
void measureDurableWrites(Bench& bench);
void measureOwners(Bench& bench);
void measureObservers(Bench& bench);
void measureManyPeers(Bench& bench);
void measureStart(Bench& bench);
void measureMemory(Bench& bench);
void measureDownloads(Bench& bench);
void measureBurns(Bench& bench);
void measureTraps(Bench& bench);
void measureFiles(Bench& bench);

}  // namespace vireo::bench
