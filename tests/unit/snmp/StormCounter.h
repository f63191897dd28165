#pragma once

#include <array>
#include <atomic>
#include <charconv>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "support/TrapReceiver.h"
#include "unit/snmp/StormPlan.h"

namespace vireo::test {

/// One trap that came.
struct StormArrival {
    unsigned place = 0;
    unsigned dest = 0;       ///< the receiver whose session it went through, as its password says
    unsigned movedWith = 0;  ///< and when that receiver had last moved
};

/// All the places that receivers move to, emptied while a storm goes on. Every address has every
/// port, so that a trap with the address of one place and the port of another arrives as well.
class StormCounter {
public:
    StormCounter() : m_thread([this] { count(); }) {}
    ~StormCounter() { finish(); }
    StormCounter(const StormCounter&) = delete;
    StormCounter& operator=(const StormCounter&) = delete;

    static std::string host(unsigned place) { return kHosts.at(place / 2); }
    std::string port(unsigned place) const { return receiver(place).port(); }

    /// Takes what is still there. Nothing is sent any more.
    void finish() {
        m_isLast = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    // To be looked at when it has finished.
    std::map<int, std::vector<StormArrival>> arrivals;  ///< by the specific number
    long strange = 0;                                   ///< what is no trap of the storm

private:
    static constexpr std::array<const char*, 2> kHosts{"127.0.0.1", "127.0.0.2"};

    static unsigned short numberOf(const TrapReceiver& receiver) {
        return static_cast<unsigned short>(std::stoi(receiver.port()));
    }
    const TrapReceiver& receiver(unsigned place) const {
        return (place < 2 ? m_first : m_second).at(place % 2);
    }
    void count() {
        while (true) {
            const bool isLast = m_isLast;
            bool isEmpty = true;
            for (unsigned place = 0; place < StormPlan::kPlaces; ++place) {
                while (const auto bytes = receiver(place).takeBytes(std::chrono::milliseconds(0))) {
                    isEmpty = false;
                    take(*bytes, place);
                }
            }
            if (isEmpty && isLast) {
                return;
            }
            if (isEmpty) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
    }
    void take(const std::string& bytes, unsigned place) {
        constexpr int kSpecific = 6;
        StormArrival arrival{.place = place};
        const auto trap = TrapReceiver::parse(bytes);
        if (trap && trap->generic == kSpecific && readPassword(trap->community, arrival)) {
            arrivals[trap->specific].push_back(arrival);
        } else {
            ++strange;
        }
    }
    /// "RECEIVER-EPOCH".
    static bool readPassword(const std::string& text, StormArrival& arrival) {
        const char* const end = text.data() + text.size();
        const auto dest = std::from_chars(text.data(), end, arrival.dest);
        return dest.ec == std::errc() && dest.ptr != end && *dest.ptr == '-' &&
               std::from_chars(dest.ptr + 1, end, arrival.movedWith).ptr == end;
    }

    std::array<TrapReceiver, 2> m_first;
    std::array<TrapReceiver, 2> m_second{TrapReceiver(numberOf(m_first[0]), kHosts[1]),
                                         TrapReceiver(numberOf(m_first[1]), kHosts[1])};
    std::atomic<bool> m_isLast{false};
    std::thread m_thread;
};

}  // namespace vireo::test
