#include <memory>
#include <string>
#include <vector>

#include "MgmtAgentIfc.h"
#include "data/ManageableData.h"
#include "harness/Exchange.h"
#include "harness/WirePeer.h"
#include "messages/RpcAdapter.h"
#include "rivals/DbusService.h"
#include "rows/Rows.h"
#include "service/Method.h"

namespace vireo::bench {
namespace {

constexpr unsigned kCounts[] = {1, 10, 100};

std::string observeRequest(const std::string& tag) {
    Method method("observeData", Method::eRequest);
    method.addStringParameter("nodeId", Parameter::eIn, tag);
    std::string text;
    RpcAdapter::encodeText(method, text);
    return text;
}

/// Reads what it is told.
class Listener : public MgmtAgentIfc {
public:
    bool manageableDataChanged(ManageableData& record) override {
        const std::string tag = record.getRootId();
        if (record.interogate(tag, tag, m_value)) {
            ++heard;
        }
        return true;
    }
    bool getData(ManageableData&) override { return false; }
    bool setData(ManageableData&) override { return false; }
    bool resetUserData() override { return true; }

    unsigned heard = 0;

private:
    std::string m_value;
};

/// Observers of one item, each with the client library.
class Listeners {
public:
    Listeners(const Phone& phone, const std::string& tag, unsigned count)
        : m_writer(phone.connect()), m_write({tag}) {
        for (unsigned i = 0; i < count; ++i) {
            m_listeners.push_back(std::make_unique<Listener>());
            m_clients.push_back(phone.connect(m_listeners.back().get()));
            bool observed = false;
            require(m_clients.back()->observeData(tag, false, observed) == CallStatus::eDone &&
                        observed,
                    "an item cannot be observed");
        }
    }

    void writeAndHear() {
        exchange(*m_writer, m_write.next(), m_reply);
        for (std::size_t i = 0; i < m_clients.size(); ++i) {
            while (m_listeners[i]->heard == 0) {
                require(m_clients[i]->serve(std::chrono::seconds(5)) == CallStatus::eDone,
                        "an observer heard nothing");
            }
            m_listeners[i]->heard = 0;
        }
    }

    RawSizes sizes() {
        const RawSizes found = exchangeSizes(*m_writer, m_write.next());
        for (const auto& client : m_clients) {
            client->serve(std::chrono::seconds(5));
        }
        for (const auto& listener : m_listeners) {
            listener->heard = 0;
        }
        return found;
    }

private:
    std::unique_ptr<LocalMgmtClient> m_writer;
    Alternating m_write;
    std::vector<std::unique_ptr<Listener>> m_listeners;
    std::vector<std::unique_ptr<LocalMgmtClient>> m_clients;
    std::string m_reply;
};

/// Observers of one item that take frames as they are.
class WireListeners {
public:
    WireListeners(const Phone& phone, const std::string& tag, unsigned count)
        : m_writer(phone.socket(), "writer-*") {
        for (const char letter : {'a', 'b'}) {
            m_requests[letter - 'a'] = WirePeer::request(writeRequest({tag}, valueOf(letter)));
        }
        const std::string observe = WirePeer::request(observeRequest(tag));
        for (unsigned i = 0; i < count; ++i) {
            m_peers.emplace_back(phone.socket(), "observer-*");
            m_peers.back().send(observe);
            m_peers.back().receive(FrameKind::eReply);
        }
    }

    /// Gives the size of what each was told.
    std::size_t writeAndHear() {
        m_isOdd = !m_isOdd;
        m_writer.send(m_requests[m_isOdd ? 1 : 0]);
        requireDone(m_writer.receive(FrameKind::eReply));
        std::size_t payload = 0;
        for (WirePeer& peer : m_peers) {
            payload = peer.receive(FrameKind::eNotification).size();
        }
        return FrameCodec::kHeaderSize + std::string_view("vireo_textMgmtAgentIfc").size() +
               payload;
    }

private:
    WirePeer m_writer;
    std::string m_requests[2];
    std::vector<WirePeer> m_peers;
    bool m_isOdd = false;
};

/// All that tell the same number of observers.
struct FanOut {
    FanOut(Bench& bench, const Phone& phone, std::size_t number, unsigned observers)
        : count(observers),
          listeners(phone, PhoneConfiguration::memoryTag(2 * number), observers),
          wire(phone, PhoneConfiguration::memoryTag(2 * number + 1), observers),
          raw(listeners.sizes(), wire.writeAndHear(), observers),
          dbus(bench.places) {
        dbus.observe(observers);
    }

    void addTo(Comparison& comparison) {
        const auto repeated = [&comparison](auto&& operation) {
            return comparison.add([operation](unsigned times) {
                for (unsigned i = 0; i < times; ++i) {
                    operation();
                }
            });
        };
        ownClients = repeated([this] { listeners.writeAndHear(); });
        ownFrames = repeated([this] { wire.writeAndHear(); });
        onSocket = repeated([this] { raw.exchange(); });
        onBus = repeated([this] { dbus.setAndHear(); });
    }

    unsigned count;
    Listeners listeners;
    WireListeners wire;
    RawFanOut raw;
    DbusService dbus;
    std::size_t ownClients = 0;
    std::size_t ownFrames = 0;
    std::size_t onSocket = 0;
    std::size_t onBus = 0;
};

/// What each further observer costs, at 100 to that at 10.
void reportGrowth(Report& report, const Comparison& comparison, const FanOut& ten,
                  const FanOut& hundred) {
    Row row;
    row.measured = "fan-out, time per observer at 100";
    row.against = "at 10";
    row.value = comparison.ratio(hundred.ownFrames, ten.ownFrames);
    const double factor = static_cast<double>(ten.count) / hundred.count;
    row.value.median *= factor;
    row.value.lowerQuartile *= factor;
    row.value.upperQuartile *= factor;
    row.goal = Goal::atMost(1.1);
    row.rounds = comparison.rounds();
    report.add(std::move(row));
}

}  // namespace

void measureObservers(Bench& bench) {
    const Phone phone(bench.places, PhoneConfiguration(1000));
    std::vector<std::unique_ptr<FanOut>> fanOuts;
    for (const unsigned count : kCounts) {
        fanOuts.push_back(std::make_unique<FanOut>(bench, phone, fanOuts.size(), count));
    }
    RawEcho echo(fanOuts.front()->listeners.sizes());
    Comparison comparison;
    const auto roundTrip = comparison.add([&](unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            echo.exchange();
        }
    });
    for (const auto& fanOut : fanOuts) {
        fanOut->addTo(comparison);
    }
    comparison.run(bench.pace.rounds, bench.pace.sliceSeconds);

    Report& report = bench.report;
    const FanOut& one = *fanOuts.front();
    report.add("write to observer", "raw round trip", comparison, one.ownClients, roundTrip,
               Goal::atMost(2));
    report.add("write to observer", "PropertiesChanged", comparison, one.ownClients, one.onBus,
               Goal::atMost(0.35));
    for (const auto& fanOut : fanOuts) {
        const bool isLast = fanOut == fanOuts.back();
        const std::string name = "fan-out to " + std::to_string(fanOut->count);
        report.add(name, "raw fan-out", comparison, fanOut->ownFrames, fanOut->onSocket,
                   isLast ? Goal::atMost(1.4) : Goal::none());
        report.add(name, "PropertiesChanged to as many", comparison, fanOut->ownClients,
                   fanOut->onBus, isLast ? Goal::atMost(0.4) : Goal::none());
    }
    reportGrowth(report, comparison, *fanOuts[1], *fanOuts[2]);
}

}  // namespace vireo::bench
