#include <string>
#include <vector>

#include "harness/Exchange.h"
#include "harness/WirePeer.h"
#include "rivals/BareSqlite.h"
#include "rows/Rows.h"

namespace vireo::bench {
namespace {

constexpr std::size_t kWriters = 64;
constexpr std::size_t kItems = 100;

std::vector<std::string> storedTags(std::size_t count) {
    std::vector<std::string> tags;
    for (std::size_t i = 0; i < count; ++i) {
        tags.push_back(PhoneConfiguration::storedTag(i));
    }
    return tags;
}

/// Writers of an item each, over a connection each.
class Writers {
public:
    explicit Writers(const Phone& phone) {
        for (const std::string& tag : storedTags(kWriters)) {
            m_peers.emplace_back(phone.socket(), "writer-*");
            for (const char letter : {'a', 'b'}) {
                m_requests[letter - 'a'].push_back(
                    WirePeer::request(writeRequest({tag}, valueOf(letter))));
            }
        }
    }

    void writeTogether() {
        const std::vector<std::string>& requests = next();
        for (std::size_t i = 0; i < kWriters; ++i) {
            m_peers[i].send(requests[i]);
        }
        for (WirePeer& peer : m_peers) {
            requireDone(peer.receive(FrameKind::eReply));
        }
    }

    void writeInTurn() {
        const std::vector<std::string>& requests = next();
        for (std::size_t i = 0; i < kWriters; ++i) {
            m_peers[i].send(requests[i]);
            requireDone(m_peers[i].receive(FrameKind::eReply));
        }
    }

private:
    const std::vector<std::string>& next() {
        m_isOdd = !m_isOdd;
        return m_requests[m_isOdd ? 1 : 0];
    }

    std::vector<WirePeer> m_peers;
    std::vector<std::string> m_requests[2];
    bool m_isOdd = false;
};

}  // namespace

void measureDurableWrites(Bench& bench) {
    const PhoneConfiguration configuration(1000);
    const Phone phone(bench.places, configuration);
    const auto client = phone.connect();
    const std::vector<std::string> tags = storedTags(configuration.storedCount());
    Alternating single({PhoneConfiguration::storedTag(kItems)});
    Alternating many(storedTags(kItems));
    RawEcho raw(exchangeSizes(*client, single.next()));
    BareSqlite sqlite(bench.places, tags);
    Writers writers(phone);
    std::string reply;

    Comparison comparison;
    const auto ownSingle = comparison.add([&](unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            exchange(*client, single.next(), reply);
        }
    });
    const auto bareSingle = comparison.add([&](unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            raw.exchange();
            sqlite.update(1);
        }
    });
    const auto ownMany = comparison.add([&](unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            exchange(*client, many.next(), reply);
        }
    });
    const auto bareMany = comparison.add([&](unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            sqlite.update(kItems);
        }
    });
    const auto together = comparison.add([&](unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            writers.writeTogether();
        }
    });
    const auto inTurn = comparison.add([&](unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            writers.writeInTurn();
        }
    });
    comparison.run(bench.pace.rounds, bench.pace.sliceSeconds);

    bench.report.add("durable setData", "bare SQLite update + raw ping-pong", comparison, ownSingle,
                     bareSingle, Goal::atMost(1.2));
    bench.report.add("100 items in one record, durable", "one SQLite transaction of 100",
                     comparison, ownMany, bareMany, Goal::atMost(1.3));
    bench.report.add("64 concurrent durable writers", "the same writes one by one", comparison,
                     together, inTurn, Goal::atLeast(5));
}

}  // namespace vireo::bench
