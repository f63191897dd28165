#include "harness/Comparison.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "harness/Failure.h"

namespace vireo::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double kWarmUpSeconds = 0.005;
constexpr double kMostOperations = 1e6;

/// By linear interpolation; sorts.
double quantile(std::vector<double>& values, double share) {
    require(!values.empty(), "nothing was measured");
    std::sort(values.begin(), values.end());
    const double position = share * static_cast<double>(values.size() - 1);
    const auto below = static_cast<std::size_t>(position);
    const std::size_t above = std::min(below + 1, values.size() - 1);
    return values[below] +
           (values[above] - values[below]) * (position - static_cast<double>(below));
}

double median(std::vector<double> values) {
    return quantile(values, 0.5);
}

}  // namespace

std::size_t Comparison::add(Work work) {
    return addTimed([work = std::move(work)](unsigned count) {
        const auto start = Clock::now();
        work(count);
        return std::chrono::duration<double>(Clock::now() - start).count();
    });
}

std::size_t Comparison::addTimed(TimedWork work) {
    m_contenders.push_back({std::move(work), 1, {}});
    return m_contenders.size() - 1;
}

void Comparison::run(unsigned rounds, double sliceSeconds) {
    for (Contender& contender : m_contenders) {
        unsigned count = 1;
        double seconds = contender.work(count);
        while (seconds < kWarmUpSeconds) {
            count *= 2;
            seconds = contender.work(count);
        }
        contender.count =
            static_cast<unsigned>(std::clamp(sliceSeconds * count / seconds, 1.0, kMostOperations));
    }
    runRounds(rounds);
}

void Comparison::runSingly(unsigned rounds) {
    runRounds(rounds);
}

void Comparison::runRounds(unsigned rounds) {
    for (unsigned round = 0; round < rounds; ++round) {
        for (std::size_t turn = 0; turn < m_contenders.size(); ++turn) {
            // Each round begins with another one: nobody always runs behind the same neighbour.
            Contender& contender = m_contenders[(round + turn) % m_contenders.size()];
            contender.secondsPerOperation.push_back(contender.work(contender.count) /
                                                    contender.count);
        }
    }
}

Ratio Comparison::ratio(std::size_t measured, std::size_t rival) const {
    const std::vector<double>& own = m_contenders.at(measured).secondsPerOperation;
    const std::vector<double>& other = m_contenders.at(rival).secondsPerOperation;
    std::vector<double> ratios;
    for (std::size_t i = 0; i < own.size(); ++i) {
        ratios.push_back(own[i] / other[i]);
    }
    Ratio result;
    result.median = median(own) / median(other);
    result.lowerQuartile = quantile(ratios, 0.25);
    result.upperQuartile = quantile(ratios, 0.75);
    return result;
}

double Comparison::medianOf(std::size_t contender) const {
    return median(m_contenders.at(contender).secondsPerOperation);
}

unsigned Comparison::rounds() const {
    return static_cast<unsigned>(m_contenders.front().secondsPerOperation.size());
}

Ratio inverse(const Ratio& ratio) {
    return {1 / ratio.median, 1 / ratio.upperQuartile, 1 / ratio.lowerQuartile};
}

}  // namespace vireo::bench
