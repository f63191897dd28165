#include <string>

#include "data/ManageableData.h"
#include "harness/Exchange.h"
#include "harness/WirePeer.h"
#include "rivals/DbusService.h"
#include "rivals/RedisServer.h"
#include "rows/Rows.h"

namespace vireo::bench {
namespace {

constexpr unsigned kInFlight = 64;

/// A function that does something `count` times.
template <class Operation>
auto repeat(Operation operation) {
    return [operation](unsigned count) mutable {
        for (unsigned i = 0; i < count; ++i) {
            operation();
        }
    };
}

void readTyped(LocalMgmtClient& client, const std::string& tag) {
    ManageableData record;
    record.addRootId(tag, nullptr);
    bool result = false;
    std::string value;
    require(client.getData(record, result) == CallStatus::eDone && result &&
                record.interogate(tag, tag, value),
            "the phone refused a read");
}

void writeTyped(LocalMgmtClient& client, const std::string& tag, const std::string& value) {
    ManageableData record;
    bool result = false;
    require(record.populate(tag, value) && client.setData(record, result) == CallStatus::eDone &&
                result,
            "the phone refused a write");
}

}  // namespace

void measureRequests(Bench& bench) {
    const Phone phone(bench.places, PhoneConfiguration(1000));
    const auto client = phone.connect();
    const std::string stored = PhoneConfiguration::storedTag(0);
    const std::string memory = PhoneConfiguration::memoryTag(0);
    std::string reply;
    exchange(*client, writeRequest({stored}, valueOf('a')), reply);
    exchange(*client, writeRequest({memory}, valueOf('a')), reply);

    const std::string readStored = readRequest({stored});
    const std::string readMemory = readRequest({memory});
    Alternating writeMemory({memory});
    RawEcho raw(exchangeSizes(*client, readStored));
    RawEcho rawWrite(exchangeSizes(*client, writeMemory.next()));
    RedisServer redis(bench.places);
    DbusService dbus(bench.places);
    bool isOdd = false;

    Comparison comparison;
    const auto ownStored = comparison.add(repeat([&] { exchange(*client, readStored, reply); }));
    const auto ownMemory = comparison.add(repeat([&] { exchange(*client, readMemory, reply); }));
    const auto ownWrite =
        comparison.add(repeat([&] { exchange(*client, writeMemory.next(), reply); }));
    const auto ownTypedRead = comparison.add(repeat([&] { readTyped(*client, stored); }));
    const auto ownTypedWrite = comparison.add(repeat([&] {
        isOdd = !isOdd;
        writeTyped(*client, memory, valueOf(isOdd ? 'a' : 'b'));
    }));
    const auto rawRead = comparison.add(repeat([&] { raw.exchange(); }));
    const auto rawSet = comparison.add(repeat([&] { rawWrite.exchange(); }));
    const auto dbusGet = comparison.add(repeat([&] { dbus.get(); }));
    const auto dbusSet = comparison.add(repeat([&] { dbus.set(); }));
    const auto redisGet = comparison.add(repeat([&] { redis.get(); }));
    const auto redisSet = comparison.add(repeat([&] { redis.set(); }));
    comparison.run(bench.pace.rounds, bench.pace.sliceSeconds);

    Report& report = bench.report;
    report.add("getData, 200 bytes, item in the store", "raw ping-pong", comparison, ownStored,
               rawRead, Goal::atMost(1.3));
    report.add("getData, 200 bytes, item in memory", "raw ping-pong", comparison, ownMemory,
               rawRead, Goal::atMost(1.3));
    report.add("setData, not durable", "raw ping-pong", comparison, ownWrite, rawSet, Goal::none());
    report.add("getData, 200 bytes, item in the store", "sd-bus Get through the daemon", comparison,
               ownTypedRead, dbusGet, Goal::atLeast(3.5));
    report.add("setData, not durable", "sd-bus Set through the daemon", comparison, ownTypedWrite,
               dbusSet, Goal::atLeast(3.5));
    report.add("getData, 200 bytes, item in the store", "Redis GET", comparison, ownStored,
               redisGet, Goal::atMost(1));
    report.add("setData, not durable", "Redis SET", comparison, ownWrite, redisSet,
               Goal::atMost(1));
}

void measureRequestsInFlight(Bench& bench) {
    const Phone phone(bench.places, PhoneConfiguration(1000));
    const std::string tag = PhoneConfiguration::storedTag(0);
    const std::string read = readRequest({tag});
    const auto client = phone.connect();
    std::string reply;
    exchange(*client, writeRequest({tag}, valueOf('a')), reply);
    RawEcho raw(exchangeSizes(*client, read));
    DbusService dbus(bench.places);
    WirePeer peer(phone.socket(), "wire");
    std::string requests;
    for (unsigned i = 0; i < kInFlight; ++i) {
        requests += WirePeer::request(read);
    }

    Comparison comparison;
    const auto own = comparison.add(repeat([&] {
        peer.send(requests);
        for (unsigned i = 0; i < kInFlight; ++i) {
            requireDone(peer.receive(FrameKind::eReply));
        }
    }));
    const auto onBus = comparison.add(repeat([&] { dbus.get(kInFlight); }));
    const auto onSocket = comparison.add(repeat([&] { raw.exchange(kInFlight); }));
    comparison.run(bench.pace.rounds, bench.pace.sliceSeconds);

    bench.report.add("64 reads in flight", "sd-bus Get, 64 in flight", comparison, own, onBus,
                     Goal::atLeast(10));
    bench.report.add("64 reads in flight", "raw, one write per message", comparison, own, onSocket,
                     Goal::atMost(1));
}

}  // namespace vireo::bench
