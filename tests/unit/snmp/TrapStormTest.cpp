#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "snmp/NetSnmpTraps.h"
#include "support/TemporaryDirectory.h"
#include "support/TrapReceiver.h"
#include "unit/reporting/TrapHouse.h"

namespace vireo::test {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr unsigned kThreads = 20;
constexpr unsigned kPlaces = 4;  // the first is that of the general manager alone

/// VIREO_STRESS_SECONDS, or one second.
milliseconds duration() {
    const char* const seconds = std::getenv("VIREO_STRESS_SECONDS");
    return milliseconds(seconds != nullptr ? std::atol(seconds) * 1000 : 1000);
}

/// Empties receivers while the storm goes on and counts what comes. Each trap says by its number
/// what was raised, and by its community for which port it was meant.
class Counter {
public:
    Counter() : m_thread([this] { count(); }) {}
    ~Counter() { finish(); }
    Counter(const Counter&) = delete;
    Counter& operator=(const Counter&) = delete;

    const TrapReceiver& place(unsigned number) const { return m_places.at(number); }
    /// Nothing is sent any more.
    void finish() {
        m_isLast = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    std::array<std::atomic<long>, 6> ofNumber{};
    std::atomic<long> copies{0};       ///< of what was raised for another than the manager
    std::atomic<long> halfChanged{0};  ///< with the community of another place
    std::atomic<long> strange{0};      ///< what is no such trap

private:
    void count() {
        while (true) {
            const bool isLast = m_isLast;
            bool isEmpty = true;
            for (const TrapReceiver& place : m_places) {
                while (const auto bytes = place.takeBytes(milliseconds(0))) {
                    isEmpty = false;
                    take(*bytes, place);
                }
            }
            if (isEmpty && isLast) {
                return;
            }
            if (isEmpty) {
                std::this_thread::sleep_for(milliseconds(1));
            }
        }
    }
    void take(const std::string& bytes, const TrapReceiver& place) {
        const auto trap = TrapReceiver::parse(bytes);
        if (!trap || trap->generic < 0 || trap->generic >= 6) {
            ++strange;
            return;
        }
        // Port and password are two items: between their writes a trap goes by one of them.
        halfChanged += trap->community != "for-" + place.port() ? 1 : 0;
        const bool isCopy = trap->generic != 0 && trap->generic < 3 && &place == &m_places[0];
        ++(isCopy ? copies : ofNumber.at(static_cast<std::size_t>(trap->generic)));
    }

    std::array<TrapReceiver, kPlaces> m_places;
    std::atomic<bool> m_isLast{false};
    std::thread m_thread;
};

class TrapStorm : public ::testing::Test, protected TrapHouse {
protected:
    TrapStorm() {
        PlatformPorts all = installedPorts();
        all.traps = &m_traps;
        installPorts(all);
        start();
        set({{"snmp-traps-active", "true"},
             {"qdc-qcu-active", "true"},
             {"tcErrorReportSNMP", "true"},
             {"qdc-snmp-active", "false"},
             {"diagnostic-snmp-active", "false"},
             {"snmp-trap-addr", "127.0.0.1"},
             {"qdc-collection-unit-addr", "127.0.0.1"},
             {"diagnostic-trap-addr", "127.0.0.1"}});
        sendTo("snmp-trap", 0);
        sendTo("qdc", 1);
        sendTo("diagnostic-trap", 2);
    }

    /// Port and community of a receiver, in one write, so that they always go together.
    void sendTo(const std::string& what, unsigned place) {
        const std::string port = counter.place(place).port();
        const bool isUnit = what == "qdc";
        set({{isUnit ? "qdc-collection-unit-port" : what + "-port", port},
             {isUnit ? "qdc-trap-pwd" : what + "-pwd", "for-" + port}});
    }

    Counter counter;

private:
    TemporaryDirectory m_root;
    NetSnmpTraps m_traps{m_root.path().string(), {}};
};

TEST_F(TrapStorm, EveryTrapOfManyThreadsArrivesWhileItemsChange) {
    std::array<std::atomic<long>, 6> sent{};
    std::atomic<long> refused{0};
    const Clock::time_point end = Clock::now() + duration();
    std::vector<std::thread> threads;
    // Those to the general manager bear the number 0, those to the others 1 and 2: a copy has the
    // number of its original.
    for (unsigned i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            const int dest = static_cast<int>(i % 3);
            for (unsigned round = 0; Clock::now() < end; ++round) {
                ++(raise(dest, dest) ? sent.at(static_cast<std::size_t>(dest)) : refused);
                if (round % 16 == 0) {
                    raise(round % 32 == 0 ? -1 : 3, 5);  // to nobody
                }
                std::this_thread::sleep_for(milliseconds(1));
            }
        });
    }
    for (unsigned round = 0; Clock::now() < end; ++round) {
        set({{"diagnostic-snmp-active", round % 2 == 0 ? "true" : "false"}});
        sendTo("qdc", 1 + round % 3);
        set({{"tcErrorReportSNMP", round % 4 == 0 ? "false" : "true"}});
        sendTo("diagnostic-trap", 1 + (round + 1) % 3);
        set({{"tcErrorReportSNMP", "true"}});
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const int unknown : {-1, 3, -2147483647 - 1}) {
        EXPECT_FALSE(raise(unknown, 4));
    }
    set({{"qdc-snmp-active", "false"}});
    EXPECT_TRUE(raise(0, 4));
    EXPECT_TRUE(raise(1, 4));
    counter.finish();

    EXPECT_EQ(counter.ofNumber[0], sent[0]);
    EXPECT_EQ(counter.ofNumber[1], sent[1]);
    EXPECT_EQ(counter.ofNumber[2], sent[2]);
    // A copy is sent also when its own receiver is off.
    EXPECT_GT(counter.copies, 0);
    EXPECT_LE(counter.copies, sent[2] + refused);
    EXPECT_EQ(counter.ofNumber[4], 2);
    EXPECT_EQ(counter.ofNumber[5], 0);
    EXPECT_EQ(counter.strange, 0);
    EXPECT_LT(counter.halfChanged * 10, sent[1] + sent[2]);
    EXPECT_GT(sent[0] + sent[1] + sent[2], 100);
    std::printf(
        "sent: manager %ld, unit %ld, diagnostic %ld, copies %ld; %ld while it was off; %ld in the "
        "middle of a change\n",
        sent[0].load(), sent[1].load(), sent[2].load(), counter.copies.load(), refused.load(),
        counter.halfChanged.load());
}

}  // namespace
}  // namespace vireo::test
