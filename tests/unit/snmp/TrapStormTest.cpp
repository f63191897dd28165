#include <atomic>
#include <chrono>
#include <thread>

#include "snmp/NetSnmpTraps.h"
#include "support/Effort.h"
#include "support/TemporaryDirectory.h"
#include "unit/reporting/TrapHouse.h"
#include "unit/snmp/StormCounter.h"

namespace vireo::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned kThreads = 20;
constexpr unsigned kFewestEpochs = 64;
// At most one of each thread began before the epoch, so most of these lie within it.
constexpr unsigned kRaisesPerEpoch = 3 * kThreads;
constexpr int kLastNumbers = 1'000'000'000;

/// A trap that was raised. Its specific number tells it from all others.
struct Raise {
    int number = 0;
    unsigned dest = 0;
    // The epochs of which it saw something; the same ones when nothing changed meanwhile.
    unsigned first = 0;
    unsigned last = 0;
    bool isSent = false;
};

/// Whether something held in the epochs that a raise saw.
struct Held {
    bool ever = false;
    bool always = true;

    template <class Condition>
    Held(const Raise& one, Condition&& condition) {
        for (unsigned epoch = one.first; epoch <= one.last; ++epoch) {
            const bool holds = condition(epoch);
            ever = ever || holds;
            always = always && holds;
        }
    }
    /// Whether `found` may be so.
    bool allows(bool found) const { return found ? ever : !always; }
};

bool cameWhereItMay(const Raise& one, const StormArrival& arrival) {
    const auto place = [&](unsigned epoch) { return StormPlan::placeOf(epoch, arrival.dest); };
    // Address, port and password are three items: in the middle of their change one may be old.
    return Held(one, [&](unsigned e) { return place(e) / 2 == arrival.place / 2; }).ever &&
           Held(one, [&](unsigned e) { return place(e) % 2 == arrival.place % 2; }).ever &&
           Held(one, [&](unsigned e) {
               return StormPlan::movedWith(e, arrival.dest) == arrival.movedWith;
           }).ever;
}

/// What cannot be of that which became of a raise; empty when the items explain all of it.
std::string faultOf(const Raise& one, const std::vector<StormArrival>& arrivals) {
    unsigned originals = 0;
    unsigned copies = 0;
    for (const StormArrival& each : arrivals) {
        if (!cameWhereItMay(one, each)) {
            return "it came to place " + std::to_string(each.place) + " for receiver " +
                   std::to_string(each.dest) + " of epoch " + std::to_string(each.movedWith);
        }
        originals += each.dest == one.dest ? 1 : 0;
        copies += each.dest == 0 && one.dest != 0 ? 1 : 0;
    }
    if (originals + copies != arrivals.size() || originals != (one.isSent ? 1U : 0U)) {
        return one.isSent ? "not sent to its receiver, once" : "sent, and answered otherwise";
    }
    if (!Held(one, [&](unsigned e) { return StormPlan::isOn(e, one.dest); }).allows(one.isSent)) {
        return "the switch said otherwise";
    }
    const Held isCopied(one, [&](unsigned e) { return StormPlan::isCopied(e, one.dest); });
    const Held isManagerOn(one, [](unsigned e) { return StormPlan::isOn(e, 0); });
    const bool mayBe = isCopied.ever && isManagerOn.ever;
    const bool mustBe = isCopied.always && isManagerOn.always;
    return copies > (mayBe ? 1U : 0U) || copies < (mustBe ? 1U : 0U)
               ? std::to_string(copies) + " copies"
               : "";
}

class TrapStorm : public ::testing::Test, protected TrapHouse {
protected:
    TrapStorm() {
        PlatformPorts all = installedPorts();
        all.traps = &m_traps;
        installPorts(all);
        start();
        goOn(StormPlan::kFirst);
    }

    unsigned epoch() const { return m_phase / 2; }
    /// Writes what the items say in the next epoch. Without raises meanwhile it may be a later one.
    void goOn(unsigned next) {
        const unsigned before = m_phase++ / 2;
        for (unsigned dest = 0; dest < kTrapDestinations; ++dest) {
            const TrapTags& tags = kTrapTags[dest];
            set({{tags.active, StormPlan::isOn(next, dest) ? "true" : "false"}});
            if (dest != 0) {
                set({{tags.copies, StormPlan::isCopied(next, dest) ? "true" : "false"}});
            }
            if (StormPlan::movedWith(next, dest) != StormPlan::movedWith(before, dest)) {
                const unsigned place = StormPlan::placeOf(next, dest);
                set({{tags.address, StormCounter::host(place)},
                     {tags.port, counter.port(place)},
                     {tags.password, StormPlan::passwordOf(next, dest)}});
            }
        }
        m_phase = 2 * next;
    }
    Raise raiseNumbered(int number, unsigned dest) {
        SNMPTrapData data;
        data.setSpecificTrapNo(number);
        Raise one{.number = number, .dest = dest};
        one.first = m_phase / 2;
        one.isSent = service.raiseSpecificTrap(static_cast<LocalMgmtIfc::TrapDest>(dest), data);
        one.last = (m_phase + 1) / 2;
        return one;
    }
    /// One thread of the storm, until it is over.
    std::vector<Raise> keepRaising(unsigned thread) {
        std::vector<Raise> raises;
        for (unsigned round = 0; !m_isOver; ++round) {
            raises.push_back(raiseNumbered(static_cast<int>(1 + thread + round * kThreads),
                                           (thread + round) % kTrapDestinations));
            if (round % 16 == 0) {
                EXPECT_FALSE(raise(round % 32 == 0 ? -1 : 3, 5));  // to nobody
            }
            ++m_raised;
            m_raised.notify_one();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return raises;
    }
    void awaitRaises(unsigned count) {
        const unsigned wanted = m_raised + count;
        for (unsigned seen = m_raised; seen < wanted; seen = m_raised) {
            m_raised.wait(seen);
        }
    }
    void endRaising() { m_isOver = true; }

    StormCounter counter;

private:
    std::atomic<unsigned> m_phase{0};  ///< twice the epoch; odd while it is left for the next one
    std::atomic<unsigned> m_raised{0};
    std::atomic<bool> m_isOver{false};
    TemporaryDirectory m_root;
    NetSnmpTraps m_traps{m_root.path().string(), {}};
};

TEST_F(TrapStorm, EveryTrapOfManyThreadsIsExplainedByWhatTheItemsSaid) {
    std::vector<std::vector<Raise>> raised(kThreads + 1);
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] { raised[i] = keepRaising(i); });
    }
    const Clock::time_point end =
        Clock::now() + std::chrono::seconds(effort("VIREO_STRESS_SECONDS", 1));
    while (Clock::now() < end || epoch() < StormPlan::kFirst + kFewestEpochs) {
        awaitRaises(kRaisesPerEpoch);
        goOn(epoch() + 1);
    }
    endRaising();
    for (std::thread& thread : threads) {
        thread.join();
    }
    // What the storm has left must not keep the next traps from going where the items say last.
    unsigned last = epoch() + 4;  // with which all have moved
    while (!StormPlan::isFull(last)) {
        ++last;
    }
    goOn(last);
    for (unsigned dest = 0; dest < kTrapDestinations; ++dest) {
        raised[kThreads].push_back(raiseNumbered(kLastNumbers + static_cast<int>(dest), dest));
        EXPECT_TRUE(raised[kThreads].back().isSent);
    }
    counter.finish();

    std::size_t inOneEpoch = 0;
    std::size_t copies = 0;
    std::size_t count = 0;
    std::vector<std::string> faults;
    for (const auto& each : raised) {
        for (const Raise& one : each) {
            const auto node = counter.arrivals.extract(one.number);
            const auto arrivals = node ? node.mapped() : std::vector<StormArrival>();
            const std::string fault = faultOf(one, arrivals);
            if (!fault.empty()) {
                faults.push_back(std::to_string(one.number) + " to " + std::to_string(one.dest) +
                                 " in " + std::to_string(one.first) + " to " +
                                 std::to_string(one.last) + ": " + fault);
            }
            ++count;
            inOneEpoch += one.first == one.last ? 1 : 0;
            copies += arrivals.size() - (one.isSent ? 1 : 0);
        }
    }
    EXPECT_EQ(faults, std::vector<std::string>());
    EXPECT_TRUE(counter.arrivals.empty()) << "nobody raised what came";
    EXPECT_EQ(counter.strange, 0);
    EXPECT_GT(inOneEpoch, kFewestEpochs * (kRaisesPerEpoch - 2 * kThreads));
    EXPECT_GT(copies, kFewestEpochs);
    std::printf("%zu raised, %zu in one epoch, %zu copies, %u epochs\n", count, inOneEpoch, copies,
                epoch());
}

}  // namespace
}  // namespace vireo::test
