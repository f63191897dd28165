#include <string>
#include <vector>

#include "harness/Exchange.h"
#include "harness/WirePeer.h"
#include "rows/Rows.h"

namespace vireo::bench {
namespace {

constexpr std::size_t kActive = 10;
constexpr std::size_t kConnected = 1000;

/// Peers of one phone, of which the first ten ask in turn.
class Crowd {
public:
    Crowd(const Places& places, std::size_t peers)
        : m_phone(places, PhoneConfiguration(1000)),
          m_read(WirePeer::request(readRequest({PhoneConfiguration::memoryTag(0)}))) {
        // The active ones stand anywhere among the others.
        for (std::size_t i = 0; i < peers; ++i) {
            (i % (peers / kActive) == 0 ? m_active : m_idle)
                .emplace_back(m_phone.socket(), "peer-*");
        }
    }

    void ask() {
        for (WirePeer& peer : m_active) {
            peer.send(m_read);
            requireDone(peer.receive(FrameKind::eReply));
        }
    }

private:
    Phone m_phone;
    std::string m_read;
    std::vector<WirePeer> m_active;
    std::vector<WirePeer> m_idle;
};

}  // namespace

void measureManyPeers(Bench& bench) {
    Crowd few(bench.places, kActive);
    Crowd many(bench.places, kConnected);
    Comparison comparison;
    const auto ownMany = comparison.add([&](unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            many.ask();
        }
    });
    const auto ownFew = comparison.add([&](unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            few.ask();
        }
    });
    comparison.run(bench.pace.rounds, bench.pace.sliceSeconds);
    bench.report.add("a read of one of 10 peers, 1,000 connected", "10 connected", comparison,
                     ownMany, ownFew, Goal::atMost(1.1));
}

}  // namespace vireo::bench
