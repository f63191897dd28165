#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vireo::bench {

/// How much is measured.
struct Pace {
    unsigned rounds = 31;
    double sliceSeconds = 0.05;  ///< how long one contender runs in a round
    unsigned heavyRounds = 9;    ///< of what takes long by itself, such as a start with many items
};

/// A ratio with the spread of the rounds.
struct Ratio {
    double median = 0;
    double lowerQuartile = 0;
    double upperQuartile = 0;
};

/// Things that do the same, run by turns: in every round each of them once, one after the other, so
/// that whatever disturbs the machine disturbs them alike.
class Comparison {
public:
    /// Does so many operations.
    using Work = std::function<void(unsigned count)>;
    /// Does so many operations and gives the seconds that count.
    using TimedWork = std::function<double(unsigned count)>;

    /// The number by which `ratio` knows it.
    std::size_t add(Work work);
    std::size_t addTimed(TimedWork work);

    /// Lets each warm up, finds how many operations make a slice, and measures.
    void run(unsigned rounds, double sliceSeconds);
    /// One operation of each in a round, without warming up.
    void runSingly(unsigned rounds);

    /// Time of an operation of `measured` to that of `rival`: of the medians of all rounds; the
    /// quartiles are those of the rounds' own ratios.
    Ratio ratio(std::size_t measured, std::size_t rival) const;
    /// Seconds of an operation, or what the timed work gives.
    double medianOf(std::size_t contender) const;
    unsigned rounds() const;

private:
    struct Contender {
        TimedWork work;
        unsigned count = 1;
        std::vector<double> secondsPerOperation;
    };

    void runRounds(unsigned rounds);

    std::vector<Contender> m_contenders;
};

/// The other way round: how many times faster.
Ratio inverse(const Ratio& ratio);

}  // namespace vireo::bench
